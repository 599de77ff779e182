#include "doctor/ArchiveChecks.h"

#include "doctor/KernelFacts.h"
#include "mkext/MkextArchive.h"
#include "mkext/MkextBuiltinTool.h"
#include "plist/RegularFile.h"

#include <QFile>
#include <QSet>
#include <optional>
#include <sys/stat.h>

namespace {

using Fix = DoctorFinding::Fix;
using Place = DoctorKext::Place;
using Severity = DoctorFinding::Severity;
using Contents = QSet<QString>; // "identifier version"

// How far a time is from the one a loader wants.
QString off(time_t time, time_t wanted) {
    return time < wanted ? QStringLiteral("%1 s too old").arg(qint64(wanted - time))
                         : QStringLiteral("%1 s too new").arg(qint64(time - wanted));
}

std::optional<time_t> modified(const QString &path) {
    struct stat st;
    if (::stat(QFile::encodeName(path).constData(), &st) != 0)
        return std::nullopt;
    return st.st_mtime;
}

// What a correct build of `place` holds for `arch`: every kext with a readable Info.plist
// and code for the processor, or no code at all. Kexts that the builder refuses as not
// authentic (D1, D2) are left out of both sides.
Contents folderContents(const DoctorScan &scan, Place place, const QString &arch,
                        QSet<QString> &refused) {
    Contents contents;
    for (const DoctorKext &kext : scan.kexts) {
        if (kext.place != place || !kext.infoRead || kext.isLink || kext.identifier.isEmpty())
            continue;
        if (kext.files.foreignOwned > 0 || kext.files.writable > 0) {
            refused.insert(kext.identifier);
            continue;
        }
        if (kext.hasExecutableKey && !kext.architectures.contains(arch))
            continue;
        contents.insert(kext.identifier + QLatin1Char(' ') + kext.version);
    }
    return contents;
}

struct ArchiveContents {
    Contents contents;
    QString error; // the archive is damaged
};

ArchiveContents archiveContents(const QByteArray &bytes, const QString &arch) {
    const MkextArchive::Opened opened = MkextArchive::open(bytes, arch);
    if (!opened.archive) {
        // No archive for this processor is an empty one; anything else is damage.
        if (opened.error.startsWith(QLatin1String("Architecture ")))
            return {};
        return {{}, opened.error};
    }
    ArchiveContents result;
    for (const MkextArchive::Kext &kext : opened.archive->kexts()) {
        result.contents.insert(
            MkextArchive::infoString(kext, "CFBundleIdentifier").value_or(QString()) +
            QLatin1Char(' ') +
            MkextArchive::infoString(kext, "CFBundleVersion").value_or(QString()));
    }
    return result;
}

QString difference(Contents archive, Contents folder, const QSet<QString> &refused) {
    auto drop = [&refused](Contents &set) {
        for (auto it = set.begin(); it != set.end();)
            it = refused.contains(it->section(QLatin1Char(' '), 0, 0)) ? set.erase(it) : ++it;
    };
    drop(archive);
    QStringList missing = (folder - archive).values();
    QStringList stale = (archive - folder).values();
    missing.sort();
    stale.sort();
    QStringList parts;
    if (!missing.isEmpty())
        parts << QStringLiteral("lacks ") + missing.join(QStringLiteral(", "));
    if (!stale.isEmpty())
        parts << QStringLiteral("still holds ") + stale.join(QStringLiteral(", "));
    return parts.join(QStringLiteral(" and "));
}

void extraMkext(const DoctorScan &scan, DoctorFindings &findings) {
    const QString mkext = scan.extraBase + QStringLiteral("/Extensions.mkext");
    const std::optional<time_t> archiveTime = modified(mkext);
    const std::optional<time_t> extensionsTime = modified(scan.extensions());
    const bool kextStore = modified(scan.kextStore()).has_value();
    auto add = [&](Severity severity, const QString &text) {
        findings.append(
            {severity, QStringLiteral("D10"), mkext, mkext, text, Fix::RebuildExtraMkext});
    };
    if (!archiveTime) {
        if (kextStore && !extensionsTime)
            add(Severity::Warning, QStringLiteral("is missing: the boot loader loads KextStore's "
                                                  "kexts only from it"));
        return;
    }
    if (!extensionsTime && !kextStore)
        return;
    // Without Extensions the boot loader always takes the archive.
    if (extensionsTime && *archiveTime != *extensionsTime + 1) {
        add(Severity::Warning,
            QStringLiteral("is not used: the boot loader takes it only when its time is "
                           "Extensions' plus one second, and it is %1")
                .arg(off(*archiveTime, *extensionsTime + 1)));
        return;
    }
    const RegularFile::Read read = RegularFile::read(mkext, MkextBuiltinTool::MaxFileSize);
    if (!read.bytes) {
        add(Severity::Error, QStringLiteral("can't be read: it ") + read.error);
        return;
    }
    const QByteArray &bytes = *read.bytes;
    const Place source = extensionsTime ? Place::ExtraExtensions : Place::KextStore;
    QStringList architectures = KernelFacts(scan.systemVersion).architectures();
    if (architectures.isEmpty())
        architectures = {QStringLiteral("i386"), QStringLiteral("x86_64")};
    QStringList differences;
    for (const QString &arch : architectures) {
        const ArchiveContents archive = archiveContents(bytes, arch);
        if (!archive.error.isEmpty()) {
            add(Severity::Error, QStringLiteral("is used but damaged: ") + archive.error);
            return;
        }
        QSet<QString> refused;
        const Contents folder = folderContents(scan, source, arch, refused);
        const QString diff = difference(archive.contents, folder, refused);
        if (!diff.isEmpty())
            differences << QStringLiteral("for %1 it %2").arg(arch, diff);
    }
    if (!differences.isEmpty())
        add(Severity::Error,
            QStringLiteral("is used but differs from %1: %2")
                .arg(source == Place::ExtraExtensions ? QStringLiteral("Extensions")
                                                      : QStringLiteral("KextStore"),
                     differences.join(QStringLiteral("; "))));
}

void staleCaches(const DoctorScan &scan, DoctorFindings &findings) {
    std::optional<time_t> newest = modified(scan.sle);
    if (!newest)
        return;
    for (const QString &kernel : ArchiveChecks::kernels()) {
        const std::optional<time_t> time = modified(scan.volumeRoot + kernel);
        if (time && *time > *newest)
            newest = time;
    }
    for (const QString &cache : ArchiveChecks::systemCaches()) {
        const QString path = scan.volumeRoot + cache;
        const std::optional<time_t> time = modified(path);
        if (!time || *time == *newest + 1)
            continue;
        findings.append({Severity::Warning, QStringLiteral("D11"), path, path,
                         QStringLiteral("is out of date: the system takes a cache only when its "
                                        "time is that of the newest of S/L/E and the kernel plus "
                                        "one second, and it is %1")
                             .arg(off(*time, *newest + 1)),
                         Fix::RebuildCaches});
    }
}

} // namespace

QStringList ArchiveChecks::systemCaches() {
    return {QStringLiteral("/System/Library/Extensions.mkext"),
            QStringLiteral("/System/Library/Caches/com.apple.kext.caches/Startup/Extensions.mkext"),
            QStringLiteral("/System/Library/Caches/com.apple.kext.caches/Startup/kernelcache"),
            QStringLiteral("/System/Library/PrelinkedKernels/prelinkedkernel")};
}

QStringList ArchiveChecks::kernels() {
    return {QStringLiteral("/mach_kernel"), QStringLiteral("/System/Library/Kernels/kernel")};
}

void ArchiveChecks::run(const DoctorScan &scan, DoctorFindings &findings) {
    extraMkext(scan, findings);
    staleCaches(scan, findings);
}

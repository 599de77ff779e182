#include "mkext/MkextBuiltinTool.h"

#include "mkext/KextCollector.h"
#include "mkext/MachOSlices.h"
#include "mkext/MkextArchive.h"
#include "mkext/MkextUnpacker.h"
#include "mkext/MkextWriter.h"

#include "plist/RegularFile.h"
#include <QDateTime>

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace {

// Takes whatever is written and keeps none of it.
class Discard : public QIODevice {
protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *, qint64 size) override { return size; }
};

MkextToolOutput failure(const QString &line) {
    return {QString(), line + QLatin1Char('\n'), 1};
}

std::optional<QByteArray> readArchive(const QString &path, MkextToolOutput &output) {
    const RegularFile::Read read = RegularFile::read(path, MkextBuiltinTool::MaxFileSize);
    if (read.bytes)
        return read.bytes;
    if (!QFileInfo::exists(path) || read.error.startsWith(QLatin1String("cannot")))
        output = failure(QStringLiteral("Can't open file %1.").arg(path));
    else if (read.error.startsWith(QLatin1String("is larger")))
        output = failure(QStringLiteral("Mkext file %1 is too large.").arg(path));
    else
        output = failure(QStringLiteral("Mkext file %1 %2.").arg(path, read.error));
    return std::nullopt;
}

MkextListedKext listed(const MkextArchive::Kext &kext) {
    const QString unknown = QStringLiteral("(unknown)");
    return {kext.bundlePath.isEmpty() ? MkextArchive::kextName(kext) + QStringLiteral(".kext")
                                      : kext.bundlePath,
            MkextArchive::infoString(kext, "CFBundleIdentifier").value_or(unknown),
            MkextArchive::infoString(kext, "CFBundleVersion").value_or(unknown)};
}

// The archive's access and modification times: the newest modification time of the
// folders it was built from, plus one second. Kexts named on their own are no folders
// and count for nothing; without any folder the archive keeps the time of its writing.
void stampAfterFolders(const QString &mkextPath, const QStringList &sources) {
    QDateTime newest;
    for (const QString &source : sources) {
        const QFileInfo info(source);
        if (info.isDir() && info.suffix() != QLatin1String("kext") &&
            (!newest.isValid() || info.lastModified() > newest))
            newest = info.lastModified();
    }
    if (!newest.isValid())
        return;
    QFile archive(mkextPath);
    if (!archive.open(QIODevice::ReadWrite))
        return;
    const QDateTime stamp = newest.addSecs(1);
    archive.setFileTime(stamp, QFileDevice::FileAccessTime);
    archive.setFileTime(stamp, QFileDevice::FileModificationTime);
}

} // namespace

MkextBuiltinTool::Listing MkextBuiltinTool::listing(const QString &mkextPath) {
    MkextToolOutput output;
    const std::optional<QByteArray> bytes = readArchive(mkextPath, output);
    if (!bytes)
        return {{}, output.err.trimmed()};
    const MkextArchive::Opened opened = MkextArchive::open(*bytes, QString());
    if (!opened.archive)
        return {{}, opened.error};
    Listing result;
    for (const MkextArchive::Kext &kext : opened.archive->kexts())
        result.kexts << listed(kext);
    return result;
}

MkextToolOutput MkextBuiltinTool::list(const QString &mkextPath) {
    const Listing listed = listing(mkextPath);
    if (!listed.error.isEmpty())
        return failure(listed.error);
    MkextToolOutput output;
    output.out = QStringLiteral("Found %1 kexts:\n").arg(listed.kexts.size());
    for (const MkextListedKext &kext : listed.kexts)
        output.out +=
            QStringLiteral("%1 - %2 (%3)\n").arg(kext.path, kext.identifier, kext.version);
    return output;
}

MkextToolOutput MkextBuiltinTool::unpack(const QString &arch, const QString &folder,
                                         const QString &mkextPath) {
    MkextToolOutput output;
    const std::optional<QByteArray> bytes = readArchive(mkextPath, output);
    if (!bytes)
        return output;
    const MkextArchive::Opened opened = MkextArchive::open(*bytes, arch);
    if (!opened.archive)
        return failure(opened.error);
    const QString error = MkextUnpacker::unpack(*opened.archive, folder);
    return error.isEmpty() ? output : failure(error);
}

MkextToolOutput MkextBuiltinTool::build(const QString &mkextPath, const QString &folder,
                                        const QStringList &archs) {
    return build(mkextPath, QStringList{folder}, archs);
}

MkextToolOutput MkextBuiltinTool::build(const QString &mkextPath, const QStringList &folders,
                                        const QStringList &archs) {
    const QStringList names =
        archs.isEmpty() ? QStringList{QStringLiteral("i386"), QStringLiteral("x86_64")} : archs;
    QList<uint32_t> cputypes;
    for (const QString &name : names) {
        const std::optional<uint32_t> cputype = MachOSlices::cpuType(name);
        if (!cputype)
            return failure(QStringLiteral("Unknown architecture %1.").arg(name));
        if (!cputypes.contains(*cputype))
            cputypes << *cputype;
    }
    KextCollector::Result collected;
    for (const QString &folder : folders) {
        KextCollector::Result one = KextCollector::collect(folder);
        if (!one.error.isEmpty())
            return failure(one.error);
        collected.kexts += std::move(one.kexts);
        collected.warnings += one.warnings;
    }
    // The archive streams into the file as it is made; a file that cannot be opened still
    // hears which of the two failures it is.
    QSaveFile file(mkextPath);
    Discard discard;
    discard.open(QIODevice::WriteOnly);
    const bool opened = file.open(QIODevice::WriteOnly);
    const MkextWriter::Result written = MkextWriter::write(
        collected.kexts, cputypes, opened ? static_cast<QIODevice &>(file) : discard);
    MkextToolOutput output;
    for (const QString &warning : collected.warnings + written.warnings)
        output.err += warning + QLatin1Char('\n');
    if (written.empty) {
        output.err += QStringLiteral("No kexts found; mkext %1 not created.\n").arg(mkextPath);
        output.status = 1;
        return output;
    }
    if (!opened || !written.written || !file.commit()) {
        output.err += QStringLiteral("Can't write mkext file %1.\n").arg(mkextPath);
        output.status = 1;
        return output;
    }
    stampAfterFolders(mkextPath, folders);
    return output;
}

#include "doctor/LibraryChecks.h"

#include "doctor/KextVersion.h"

#include <QSet>

namespace {

using Fix = DoctorFinding::Fix;
using Severity = DoctorFinding::Severity;

// The kernel's own libraries: provided by the running kernel whatever S/L/E holds.
bool kernelLibrary(const QString &identifier) {
    return identifier.startsWith(QLatin1String("com.apple.kpi.")) ||
           identifier.startsWith(QLatin1String("com.apple.kernel"));
}

// A library serves a request when the request lies between the oldest version it is
// compatible with and its own; one that declares no compatible version serves nobody.
bool serves(const std::optional<KextVersion> &own, const std::optional<KextVersion> &oldest,
            const KextVersion &wanted) {
    return own && oldest && *oldest <= wanted && wanted <= *own;
}

// The interfaces have existed since 10.4 (kernel 8); the old kernel libraries since 1.0.
const std::optional<KextVersion> &kernelCompatible(const QString &identifier) {
    static const std::optional<KextVersion> interfaces =
        KextVersion::parse(QStringLiteral("8.0.0"));
    static const std::optional<KextVersion> libraries = KextVersion::parse(QStringLiteral("1.0.0"));
    return identifier.startsWith(QLatin1String("com.apple.kpi.")) ? interfaces : libraries;
}

QString copies(const DoctorScan &scan, const QList<int> &positions) {
    QStringList versions;
    for (int at : positions) {
        const DoctorKext &kext = scan.kexts.at(at);
        versions << (kext.compatibleVersion.isEmpty()
                         ? QStringLiteral("%1, declares no compatible version").arg(kext.version)
                         : QStringLiteral("%1, compatible from %2")
                               .arg(kext.version, kext.compatibleVersion));
    }
    return versions.join(QStringLiteral("; "));
}

void dependencies(const DoctorScan &scan, const DoctorKext &kext, DoctorFindings &findings) {
    for (const auto &[identifier, version] : kext.libraries) {
        if (LibraryChecks::provider(scan, identifier, version))
            continue;
        const QList<int> found = scan.byIdentifier.value(identifier);
        QString text;
        if (!KextVersion::parse(version))
            text = QStringLiteral("asks for %1 in version \"%2\", which is not a version")
                       .arg(identifier, version);
        else if (found.isEmpty())
            text = QStringLiteral("needs %1 %2: not found").arg(identifier, version);
        else
            text = QStringLiteral("needs %1 %2: only incompatible versions found (%3)")
                       .arg(identifier, version, copies(scan, found));
        findings.append(
            {Severity::Error, QStringLiteral("D7"), kext.path, kext.path, text, Fix::Reinstall});
    }
}

bool bootLoaderSkips(const DoctorKext &kext) {
    return !kext.hasRequired || kext.required == QLatin1String("Safe Boot");
}

QString skipReason(const DoctorKext &kext) {
    return kext.hasRequired ? QStringLiteral("OSBundleRequired is \"Safe Boot\"")
                            : QStringLiteral("has no OSBundleRequired");
}

// The Extra kexts the boot loader loads, then the S/L/E kexts it must load with them.
void bootLoader(const DoctorScan &scan, DoctorFindings &findings) {
    QSet<int> reported;
    for (int start = 0; start < scan.kexts.size(); ++start) {
        const DoctorKext &extra = scan.kexts.at(start);
        if (!extra.inExtra() || !extra.infoRead)
            continue;
        if (bootLoaderSkips(extra))
            findings.append({Severity::Warning, QStringLiteral("D8"), extra.path, extra.path,
                             skipReason(extra) + QStringLiteral(": the boot loader skips it"),
                             Fix::EditInfoPlist});
        QList<int> queue{start};
        QSet<int> seen{start};
        while (!queue.isEmpty()) {
            const DoctorKext &kext = scan.kexts.at(queue.takeFirst());
            for (const auto &[identifier, version] : kext.libraries) {
                const std::optional<int> at = LibraryChecks::provider(scan, identifier, version);
                if (!at || *at < 0 || seen.contains(*at) || kernelLibrary(identifier))
                    continue;
                seen.insert(*at);
                queue.append(*at);
                const DoctorKext &library = scan.kexts.at(*at);
                if (library.inExtra() || !bootLoaderSkips(library) || reported.contains(*at))
                    continue;
                reported.insert(*at);
                findings.append(
                    {Severity::Warning, QStringLiteral("D8"), library.path, library.path,
                     skipReason(library) + QStringLiteral(", but %1 in Extra needs it at boot: the "
                                                          "boot loader skips it")
                                               .arg(extra.identifier),
                     Fix::EditInfoPlist});
            }
        }
    }
}

} // namespace

std::optional<int> LibraryChecks::provider(const DoctorScan &scan, const QString &identifier,
                                           const QString &version) {
    const std::optional<KextVersion> wanted = KextVersion::parse(version);
    if (!wanted)
        return std::nullopt;
    for (int at : scan.byIdentifier.value(identifier)) {
        const DoctorKext &kext = scan.kexts.at(at);
        if (serves(kext.parsedVersion, kext.parsedCompatible, *wanted))
            return at;
    }
    if (!kernelLibrary(identifier))
        return std::nullopt;
    if (!scan.kernelKnown || serves(scan.kernelVersion, kernelCompatible(identifier), *wanted))
        return -1;
    return std::nullopt;
}

void LibraryChecks::run(const DoctorScan &scan, DoctorFindings &findings) {
    for (const DoctorKext &kext : scan.kexts) {
        if (kext.infoRead && !kext.isLink)
            dependencies(scan, kext, findings);
    }
    bootLoader(scan, findings);
}

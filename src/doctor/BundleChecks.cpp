#include "doctor/BundleChecks.h"

#include "doctor/KextVersion.h"

namespace {

using Fix = DoctorFinding::Fix;
using Severity = DoctorFinding::Severity;

class Checker {
public:
    Checker(const DoctorScan &scan, const DoctorKext &kext, DoctorFindings &findings)
        : m_scan(scan), m_kext(kext), m_findings(findings) {}

    void run() {
        owners();
        modes();
        links();
        if (m_kext.isLink)
            return;
        if (!infoPlist())
            return;
        keys();
        architectures();
        kernelInterfaces();
    }

private:
    void add(Severity severity, const char *id, const QString &text, Fix fix) {
        m_findings.append({severity, QLatin1String(id), m_kext.path, m_kext.path, text, fix});
    }

    static QString item(const QString &relative) {
        return relative.isEmpty() ? QStringLiteral("the bundle folder") : relative;
    }
    static QString more(int count, const char *what) {
        return count > 1 ? QStringLiteral(" (%1 %2 in all)").arg(count).arg(QLatin1String(what))
                         : QString();
    }
    Fix permissionsRepair() const { return m_kext.inExtra() ? Fix::RepairExtra : Fix::RepairSle; }

    void owners() {
        const BundleWalk::Result &files = m_kext.files;
        if (files.foreignOwned == 0)
            return;
        add(Severity::Error, "D1",
            QStringLiteral("%1 is owned by %2:%3, not root:wheel (0:0)%4; the kernel refuses "
                           "a kext that is not all root's (\"must be root:wheel\")")
                .arg(item(files.firstForeign))
                .arg(files.foreignOwner.uid)
                .arg(files.foreignOwner.gid)
                .arg(more(files.foreignOwned, "items")),
            permissionsRepair());
    }

    void modes() {
        const BundleWalk::Result &files = m_kext.files;
        if (files.writable == 0)
            return;
        add(Severity::Error, "D2",
            QStringLiteral("%1 is writable by group or others (mode %2)%3; the kernel refuses it")
                .arg(item(files.firstWritable))
                .arg(QString::number(files.writableMode, 8).rightJustified(4, QLatin1Char('0')))
                .arg(more(files.writable, "items")),
            permissionsRepair());
    }

    void links() {
        const BundleWalk::Result &files = m_kext.files;
        if (files.links == 0)
            return;
        add(Severity::Warning, "D3",
            QStringLiteral("%1 is a symbolic link (to %2)%3; boot loaders don't follow links")
                .arg(item(files.firstLink), files.linkTarget, more(files.links, "links")),
            Fix::Reinstall);
    }

    bool infoPlist() {
        if (m_kext.infoFile.isEmpty()) {
            add(Severity::Error, "D4", QStringLiteral("has no Info.plist (Contents/Info.plist)"),
                Fix::Reinstall);
            return false;
        }
        if (!m_kext.infoRead) {
            add(Severity::Error, "D4",
                QStringLiteral("%1 can't be read: it is not a property list holding a dictionary")
                    .arg(m_kext.infoFile.mid(m_kext.path.size() + 1)),
                Fix::Reinstall);
            return false;
        }
        return true;
    }

    void keyProblem(const QString &text) { add(Severity::Error, "D5", text, Fix::Reinstall); }

    void keys() {
        if (m_kext.identifier.isEmpty())
            keyProblem(QStringLiteral("Info.plist has no CFBundleIdentifier"));
        const std::optional<KextVersion> &version = m_kext.parsedVersion;
        if (m_kext.version.isEmpty())
            keyProblem(QStringLiteral("Info.plist has no CFBundleVersion"));
        else if (!version)
            keyProblem(QStringLiteral("CFBundleVersion \"%1\" is not a version the kernel reads")
                           .arg(m_kext.version));
        if (!m_kext.hasPackageType)
            keyProblem(QStringLiteral("Info.plist has no CFBundlePackageType"));
        else if (m_kext.packageType != QLatin1String("KEXT"))
            keyProblem(QStringLiteral("CFBundlePackageType is \"%1\", not \"KEXT\"")
                           .arg(m_kext.packageType));
        if (m_kext.hasExecutableKey && m_kext.executablePath.isEmpty())
            keyProblem(QStringLiteral("CFBundleExecutable names \"%1\", which the bundle lacks")
                           .arg(m_kext.executableName));
        if (m_kext.compatibleVersion.isEmpty())
            return;
        const std::optional<KextVersion> &compatible = m_kext.parsedCompatible;
        if (!compatible)
            keyProblem(
                QStringLiteral("OSBundleCompatibleVersion \"%1\" is not a version the kernel reads")
                    .arg(m_kext.compatibleVersion));
        else if (version && *compatible > *version)
            keyProblem(
                QStringLiteral("OSBundleCompatibleVersion %1 is newer than CFBundleVersion %2")
                    .arg(m_kext.compatibleVersion, m_kext.version));
    }

    void architectures() {
        if (m_kext.executablePath.isEmpty())
            return; // codeless, or already told under D5
        const QString executable = m_kext.executablePath.mid(m_kext.path.size() + 1);
        if (!m_kext.machO) {
            add(Severity::Error, "D6",
                QStringLiteral("%1 is not a Mach-O file: no code for the kernel").arg(executable),
                Fix::Reinstall);
            return;
        }
        if (!m_scan.kernelKnown)
            return;
        QStringList missing;
        for (const QString &arch : m_scan.kernelArchitectures) {
            if (!m_kext.architectures.contains(arch))
                missing << arch;
        }
        if (missing.isEmpty())
            return;
        const QString has = m_kext.architectures.join(QStringLiteral(", "));
        const bool oneOfTwo = missing.size() < m_scan.kernelArchitectures.size();
        add(oneOfTwo ? Severity::Warning : Severity::Error, "D6",
            oneOfTwo ? QStringLiteral("has no %1 code (only %2): it won't load when %3 starts "
                                      "its %1 kernel")
                           .arg(missing.first(), has, m_scan.systemVersion)
                     : QStringLiteral("has no code for the %1 kernel of %2 (only %3)")
                           .arg(missing.join(QStringLiteral(" or ")), m_scan.systemVersion, has),
            Fix::Reinstall);
    }

    void kernelInterfaces() {
        if (!m_kext.architectures.contains(QLatin1String("x86_64")))
            return;
        for (const auto &library : m_kext.libraries) {
            if (!library.first.startsWith(QLatin1String("com.apple.kernel")))
                continue;
            add(Severity::Error, "D12",
                QStringLiteral("has x86_64 code but links against %1; 64-bit kexts must use the "
                               "kernel programming interfaces (com.apple.kpi.*)")
                    .arg(library.first),
                Fix::Reinstall);
            return;
        }
    }

    const DoctorScan &m_scan;
    const DoctorKext &m_kext;
    DoctorFindings &m_findings;
};

} // namespace

void BundleChecks::run(const DoctorScan &scan, const DoctorKext &kext, DoctorFindings &findings) {
    Checker(scan, kext, findings).run();
}

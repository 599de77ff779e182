#include "sandbox/SandboxTools.h"

#include "sandbox/KextToolsStandIn.h"
#include "sandbox/MkextToolsStandIn.h"
#include "sandbox/SandboxOwners.h"
#include "sandbox/SystemToolsStandIn.h"

SandboxTools::SandboxTools(const QString &root, const QString &binary)
    : m_root(root), m_binary(binary) {}

QStringList SandboxTools::paths() {
    return {QStringLiteral("/usr/sbin/kextstat"),  QStringLiteral("/usr/sbin/kextlibs"),
            QStringLiteral("/usr/sbin/kextcache"), QStringLiteral("/usr/sbin/mkextunpack"),
            QStringLiteral("/usr/sbin/diskutil"),  QStringLiteral("/usr/sbin/system_profiler"),
            QStringLiteral("/sbin/kextload"),      QStringLiteral("/sbin/kextunload"),
            QStringLiteral("/usr/bin/file"),       QStringLiteral("/usr/sbin/chown")};
}

bool SandboxTools::has(const QString &name) {
    for (const QString &path : paths()) {
        if (path.section(QLatin1Char('/'), -1) == name)
            return true;
    }
    return false;
}

StandInResult SandboxTools::run(const QString &name, const QStringList &args) const {
    const KextToolsStandIn kexts(m_root);
    const SystemToolsStandIn system(m_root);
    const MkextToolsStandIn mkext(m_root, m_binary);
    if (name == QLatin1String("kextstat"))
        return kexts.kextstat(args);
    if (name == QLatin1String("kextload"))
        return kexts.kextload(args);
    if (name == QLatin1String("kextunload"))
        return kexts.kextunload(args);
    if (name == QLatin1String("kextlibs"))
        return kexts.kextlibs(args);
    if (name == QLatin1String("kextcache"))
        return mkext.kextcache(args);
    if (name == QLatin1String("mkextunpack"))
        return mkext.mkextunpack(args);
    if (name == QLatin1String("diskutil"))
        return system.diskutil(args);
    if (name == QLatin1String("system_profiler"))
        return system.systemProfiler(args);
    if (name == QLatin1String("file"))
        return system.file(args);
    if (name == QLatin1String("chown"))
        return SandboxOwners(m_root).chown(args);
    return StandInResult::failure(QStringLiteral("%1: command not found\n").arg(name), 127);
}

#include "maintenance/MkextRebuild.h"

#include "volumes/SystemPaths.h"

#include <QCoreApplication>
#include <QFileInfo>

namespace {
QString &executableOverride() {
    static QString path;
    return path;
}
} // namespace

QString kextkeeperExecutable() {
    if (!executableOverride().isEmpty())
        return executableOverride();
    return QCoreApplication::applicationFilePath();
}

void setKextkeeperExecutable(const QString &path) {
    executableOverride() = path;
}

bool mkextRebuildUsesBuiltin(const SystemPaths &paths) {
    return !QFileInfo(paths.system(QStringLiteral("/usr/sbin/kextcache"))).isExecutable();
}

Command mkextRebuildCommand(const SystemPaths &paths, const QString &mkextPath,
                            const QString &sourceFolder) {
    if (mkextRebuildUsesBuiltin(paths)) {
        return Command{kextkeeperExecutable(),
                       {QStringLiteral("mkext"), QStringLiteral("build"), mkextPath, sourceFolder,
                        QStringLiteral("--arch"), QStringLiteral("i386"), QStringLiteral("--arch"),
                        QStringLiteral("x86_64")},
                       true};
    }
    return Command{paths.system(QStringLiteral("/usr/sbin/kextcache")),
                   {QStringLiteral("-v"), QStringLiteral("1"), QStringLiteral("-a"),
                    QStringLiteral("i386"), QStringLiteral("-a"), QStringLiteral("x86_64"),
                    QStringLiteral("-m"), mkextPath, sourceFolder},
                   true};
}

#include "volumes/KextFolders.h"

#include <QFileInfo>

KextFolders::KextFolders(const QString &volumeRoot, const QString &extraVersion)
    : m_root(volumeRoot + QLatin1Char('/')), m_version(extraVersion) {}

const QStringList &KextFolders::versions() {
    static const QStringList list{QStringLiteral("10.4"), QStringLiteral("10.5"),
                                  QStringLiteral("10.6"), QStringLiteral("10.7")};
    return list;
}

QString KextFolders::extraBase() const {
    return m_version.isEmpty() ? extra() : extra() + QLatin1Char('/') + m_version;
}

QString KextFolders::lionStartupMkext() const {
    return m_root +
           QStringLiteral("System/Library/Caches/com.apple.kext.caches/Startup/Extensions.mkext");
}

QString KextFolders::systemVersionFile() const {
    return m_root + QStringLiteral("System/Library/CoreServices/SystemVersion.plist");
}

bool KextFolders::slePresent() const {
    return QFileInfo::exists(sle());
}

bool KextFolders::extraPresent() const {
    return QFileInfo::exists(extensions()) || QFileInfo::exists(kextStore());
}

QList<bool> KextFolders::versionFolders() const {
    QList<bool> present;
    for (const QString &version : versions())
        present << QFileInfo::exists(extra() + QLatin1Char('/') + version);
    return present;
}

#include "volumes/KextFolderLayout.h"

#include <QFileInfo>

const QStringList &KextFolderLayout::versions() {
    static const QStringList list{QStringLiteral("10.4"), QStringLiteral("10.5"),
                                  QStringLiteral("10.6"), QStringLiteral("10.7")};
    return list;
}

QString KextFolderLayout::extraBase(const QString &rp, const QString &extraVer) {
    if (extraVer.isEmpty())
        return rp + QStringLiteral("/Extra");
    return rp + QStringLiteral("/Extra/") + extraVer;
}

bool KextFolderLayout::slePresent(const QString &rp) {
    return QFileInfo::exists(sle(rp));
}

bool KextFolderLayout::extraPresent(const QString &rp, const QString &extraVer) {
    const QString base = extraBase(rp, extraVer);
    return QFileInfo::exists(base + QStringLiteral("/Extensions")) ||
           QFileInfo::exists(base + QStringLiteral("/KextStore"));
}

QList<bool> KextFolderLayout::versionFolders(const QString &rp) {
    QList<bool> present;
    for (const QString &version : versions())
        present << QFileInfo::exists(rp + QStringLiteral("/Extra/") + version);
    return present;
}

#pragma once

#include <QString>
#include <QStringList>

// Names of the kext folders on one volume, and what of them exists. Paths are formed
// from the volume root without a trailing slash, as the volume selectors use it.
class KextFolderLayout {
public:
    // The version folders the boot loader may use instead of Extra itself.
    static const QStringList &versions(); // "10.4" .. "10.7"

    // rp + "/Extra", or rp + "/Extra/" + version when a version is chosen.
    static QString extraBase(const QString &rp, const QString &extraVer);
    static QString sle(const QString &rp) {
        return rp + QStringLiteral("/System/Library/Extensions");
    }

    // The S/L/E folder exists.
    static bool slePresent(const QString &rp);
    // The Extra base folder holds Extensions or, failing that, KextStore.
    static bool extraPresent(const QString &rp, const QString &extraVer);
    // Whether rp + "/Extra/" + version exists, for each of versions() in order.
    static QList<bool> versionFolders(const QString &rp);
};

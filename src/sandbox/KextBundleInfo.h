#pragma once

#include <QList>
#include <QMap>
#include <QPair>
#include <QString>
#include <optional>

// What the sandbox's kext tools need to know about a bundle on disk: read from its
// Info.plist (Contents/Info.plist, or Info.plist at the top of an old-style bundle).
struct KextBundleInfo {
    QString identifier;
    QString version;
    QString executablePath; // empty for a codeless kext
    QList<QPair<QString, QString>> libraries;

    // Absent when the folder holds no readable Info.plist with a bundle identifier.
    static std::optional<KextBundleInfo> read(const QString &bundlePath);
    // Every kext below `folder`, plug-ins included: identifier -> bundle path.
    static QMap<QString, QString> index(const QString &folder);
};

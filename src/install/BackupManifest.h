#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <optional>

// The note an installation leaves in each of its backup folders, so the bundles there can
// be put back where they came from: for every bundle the folder it was removed from
// (relative to the volume's root), and the volume, version folder and destination of
// that installation. Written as "Manifest.plist" beside the bundles.
struct BackupManifest {
    struct Bundle {
        QString name;        // "Driver.kext"
        QString removedFrom; // "Extra/Extensions", "System/Library/Extensions"
        bool operator==(const Bundle &) const = default;
    };

    QDateTime date;
    QString volume;       // title under /Volumes
    QString extraVersion; // "", "10.4" .. "10.7"
    QString destination;  // "extra" or "sle", as `install --to` takes it
    QList<Bundle> bundles;

    static QString fileName() { return QStringLiteral("Manifest.plist"); }

    bool write(const QString &backupFolder) const;
    // Absent when the folder has no readable manifest (a backup of an older version).
    static std::optional<BackupManifest> read(const QString &backupFolder);
};

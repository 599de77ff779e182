#pragma once

#include "install/BackupManifest.h"

#include <QDateTime>
#include <QString>

// The backups of one installation run: "Kext Backups/<day-month time>" on the desktop,
// made as the user only when a bundle is about to be replaced. A backup is compared with
// its original before anyone may remove the original, and never overwrites or skips: a
// folder that another run made, or that already holds the name, gives way to the next
// free second's folder. Each folder gets a manifest so it can be restored.
class KextBackup {
public:
    // "dd-MM HH_mm_ss": no year and no characters a file system might refuse.
    static QString folderName(const QDateTime &when);
    static QString backupsFolder(const QString &desktop) {
        return desktop + QStringLiteral("/Kext Backups");
    }

    // `manifest` names the installation; its bundles are filled in as they are saved.
    KextBackup(const QString &desktop, const QDateTime &when, BackupManifest manifest);

    // The folder the next backup goes to.
    QString runFolder() const;

    struct Saved {
        QString copy;  // the backup, when it is complete
        QString error; // why there is no complete backup
    };
    // Copies the installed bundle into this run's folder, compares the copy with it
    // (files, bytes, modes, links) and adds it to the folder's manifest.
    Saved save(const QString &installedCopy, const QString &removedFrom);

    // Copies a folder tree, symbolic links as links. Fails when the target exists.
    static bool copyTree(const QString &from, const QString &to);

private:
    bool useFolderFor(const QString &name);

    QString m_backups;
    QDateTime m_when;
    int m_step = 0;      // seconds past the run's time of the current folder
    bool m_ours = false; // the current folder was made by this run
    BackupManifest m_manifest;
};

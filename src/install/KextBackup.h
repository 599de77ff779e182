#pragma once

#include <QDateTime>
#include <QString>

// The backups of one installation run: "Kext Backups/<day-month time>" on the desktop,
// made as the user only when a bundle is about to be replaced.
class KextBackup {
public:
    // "dd-MM HH_mm_ss": no year and no characters a file system might refuse.
    static QString folderName(const QDateTime &when);

    KextBackup(const QString &desktop, const QString &folderName);

    QString backupsFolder() const { return m_backups; }
    QString runFolder() const { return m_run; }

    // Copies the installed bundle into the run's folder under its own name. A copy that
    // fails (a bundle already backed up in this run, an unreadable file) is given up
    // without touching the installed bundle.
    bool save(const QString &installedCopy, const QString &name) const;

    // Copies a folder tree, symbolic links as links. Fails when the target exists.
    static bool copyTree(const QString &from, const QString &to);

private:
    QString m_backups;
    QString m_run;
};

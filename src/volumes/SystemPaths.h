#pragma once

#include <QString>
#include <QStringList>

// Where the system's folders and tools are. On a real Mac the root is "/" and every
// path is the one Apple's tools expect. With --root DIR (a sandbox, or a volume being
// rescued from another system) every absolute path the program forms, tools included,
// is taken below DIR. The home folder, our own settings folder and paths the user hands
// over are never moved.
class SystemPaths {
public:
    explicit SystemPaths(const QString &root = QStringLiteral("/"), const QString &home = {},
                         const QString &contentsDir = {});

    QString root() const { return m_root; }
    bool isSandbox() const { return m_root != QLatin1String("/"); }

    // An absolute system path ("/usr/sbin/kextcache") placed below the root.
    QString system(const QString &absolutePath) const;

    // "/Volumes" below the root. On a host without it (and without a sandbox root) the
    // folder where the desktop mounts removable volumes.
    QString volumesDir() const;
    // The volumes folder + "/" + title: the `rp` of the volume selectors.
    QString volumeRoot(const QString &title) const { return volumesDir() + '/' + title; }

    QString home() const { return m_home; }
    QString desktop() const { return m_home + QStringLiteral("/Desktop"); }
    // Holds Info.plist (our settings) and CustomKextDirs.plist.
    QString contentsDir() const { return m_contents; }
    QString infoPlist() const { return m_contents + QStringLiteral("/Info.plist"); }

    // Environment entries for root shells, so bare tool names ("kextload") are found
    // below the root first. Empty on a real system: the root shell's own path applies.
    QStringList rootEnvironment() const;

    static QString defaultContentsDir();

private:
    QString m_root;
    QString m_home;
    QString m_contents;
};

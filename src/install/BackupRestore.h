#pragma once

#include "install/BackupManifest.h"
#include "install/InstallOptions.h"
#include "volumes/SystemPaths.h"

#include <QList>
#include <QString>
#include <optional>

// Putting the kexts of a backup folder back where an installation took them from. The
// restore is an installation of the backed-up bundles into the folder named in the
// folder's manifest, with backups of what it replaces: the same checks, the same safe
// steps and the same permission repair and cache or mkext rebuild.
class BackupRestore {
public:
    struct Backup {
        QString folder;                         // absolute path of the dated folder
        std::optional<BackupManifest> manifest; // absent: not made by an installation of ours
        QString name() const;
    };

    // The dated folders below "Kext Backups" on the desktop, oldest first.
    static QList<Backup> list(const QString &desktop);

    // The backup a word names: a folder below "Kext Backups", or a path.
    static std::optional<Backup> find(const QString &desktop, const QString &word);

    struct Plan {
        InstallOptions options; // bundles, volume, version and destination; backups on
        QString folder;         // where they go, as the installation's commands name it
        QString problem;        // not empty: the backup cannot be put back
    };
    // What putting this backup back installs, and where; `prelinkKernel` as the window's
    // menu or the settings say.
    static Plan plan(const Backup &backup, const SystemPaths &paths, bool prelinkKernel);
};

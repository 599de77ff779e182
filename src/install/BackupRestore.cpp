#include "install/BackupRestore.h"

#include "exec/Tr.h"
#include "install/KextBackup.h"
#include "volumes/VolumeList.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>

QString BackupRestore::Backup::name() const {
    return QFileInfo(folder).fileName();
}

QList<BackupRestore::Backup> BackupRestore::list(const QString &desktop) {
    const QDir backups(KextBackup::backupsFolder(desktop));
    QList<Backup> found;
    for (const QString &name :
         backups.entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks, QDir::Name)) {
        const QString folder = backups.filePath(name);
        found << Backup{folder, BackupManifest::read(folder)};
    }
    // The folder names carry no year: the manifests' dates order them where they can.
    std::stable_sort(found.begin(), found.end(), [](const Backup &a, const Backup &b) {
        if (a.manifest && b.manifest)
            return a.manifest->date < b.manifest->date;
        return !a.manifest && b.manifest;
    });
    return found;
}

std::optional<BackupRestore::Backup> BackupRestore::find(const QString &desktop,
                                                         const QString &word) {
    const QString below = KextBackup::backupsFolder(desktop) + QLatin1Char('/') + word;
    const QString folder = !word.contains(QLatin1Char('/')) && QFileInfo(below).isDir()
                               ? below
                               : QFileInfo(word).absoluteFilePath();
    if (!QFileInfo(folder).isDir())
        return std::nullopt;
    return Backup{QDir::cleanPath(folder), BackupManifest::read(folder)};
}

BackupRestore::Plan BackupRestore::plan(const Backup &backup, const SystemPaths &paths,
                                        bool prelinkKernel) {
    Plan plan;
    if (!backup.manifest || backup.manifest->bundles.isEmpty()) {
        plan.problem = kkTr("%1 holds no note of where its kexts came from, so they cannot be "
                            "put back automatically.")
                           .arg(backup.folder);
        return plan;
    }
    const BackupManifest &manifest = *backup.manifest;
    InstallOptions &options = plan.options;
    options.volume = manifest.volume;
    options.extraVersion = manifest.extraVersion;
    options.toExtra = manifest.destination == QLatin1String("extra");
    options.toSle = manifest.destination == QLatin1String("sle");
    options.backup = true;
    options.prelinkKernel = prelinkKernel;
    if (manifest.volume.contains(QLatin1Char('/')) ||
        !VolumeList::build(paths.volumesDir()).contains(manifest.volume)) {
        plan.problem =
            kkTr("The volume %1 that the kexts came from is not there.").arg(manifest.volume);
        return plan;
    }
    // The installation chooses among the folders that exist now; it must be the one the
    // kexts were taken from.
    const QString root = paths.volumeRoot(manifest.volume) + QLatin1Char('/');
    const QString base = manifest.extraVersion.isEmpty()
                             ? QStringLiteral("Extra")
                             : QStringLiteral("Extra/") + manifest.extraVersion;
    QString relative = QStringLiteral("System/Library/Extensions");
    if (options.toExtra)
        relative = base + (QFileInfo::exists(root + base + QStringLiteral("/Extensions"))
                               ? QStringLiteral("/Extensions")
                               : QStringLiteral("/KextStore"));
    plan.folder = root + relative;
    for (const BackupManifest::Bundle &bundle : manifest.bundles) {
        if (bundle.removedFrom != relative) {
            plan.problem = kkTr("%1 came from %2, which is not on %3 any more.")
                               .arg(bundle.name, bundle.removedFrom, manifest.volume);
            return plan;
        }
        options.bundles << backup.folder + QLatin1Char('/') + bundle.name;
    }
    if (!options.toExtra && !options.toSle)
        plan.problem = kkTr("%1 names no destination its kexts can go back to.").arg(backup.folder);
    return plan;
}

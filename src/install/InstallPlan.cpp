#include "install/InstallPlan.h"

#include "exec/AppServices.h"
#include "exec/Executor.h"
#include "exec/Tr.h"
#include "install/FileTree.h"
#include "install/InstallList.h"
#include "install/InstallPreflight.h"
#include "install/InstallView.h"
#include "maintenance/LionCache.h"
#include "maintenance/MkextRebuild.h"
#include "maintenance/OwnershipRepair.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {
bool isSameFile(const QString &a, const QString &b) {
    const QString canonical = QFileInfo(a).canonicalFilePath();
    return !canonical.isEmpty() && canonical == QFileInfo(b).canonicalFilePath();
}
} // namespace

InstallPlan::InstallPlan(InstallOptions options, AppServices &services, Executor &executor,
                         InstallView &view)
    : m_options(std::move(options)), m_services(services), m_paths(services.paths()),
      m_folders(m_paths.volumeRoot(m_options.volume), m_options.extraVersion), m_executor(executor),
      m_view(view), m_clock([] { return QDateTime::currentDateTime(); }) {}

bool InstallPlan::exists(const QString &path) const {
    return m_executor.exists(path);
}

std::optional<TaskResult> InstallPlan::prepare() {
    if (m_options.bundles.isEmpty())
        return TaskResult::failed(kkTr("No selected kexts to install."));
    if (!m_executor.authorize())
        return TaskResult::failed();
    m_view.progressPrepared(int(m_options.bundles.size()) - 1);
    return std::nullopt;
}

TaskResult InstallPlan::run() {
    m_view.setControlsEnabled(false);
    m_view.setWorking(true);
    const QDateTime now = m_clock();
    if (m_options.backup) {
        m_datedir = KextBackup::folderName(now);
        BackupManifest manifest;
        manifest.volume = m_options.volume;
        manifest.extraVersion = m_options.extraVersion;
        manifest.destination = m_options.toSle ? QStringLiteral("sle") : QStringLiteral("extra");
        m_backup.emplace(m_paths.desktop(), now, manifest);
    }
    m_view.taskState(m_folders.root(), m_datedir);

    if (m_options.toExtra) {
        const bool extensions = exists(m_folders.extensions());
        const bool kextStore = exists(m_folders.kextStore());
        if (extensions && kextStore)
            return stopEarly(kkTr("Both Extra/Extensions and Extra/KextStore found."), true);
        if (!extensions && !kextStore)
            return stopEarly(kkTr("No Extra/Extensions or Extra/KextStore found."), true);
        if (!checkBeforeInstalling(extensions ? m_folders.extensions() : m_folders.kextStore()))
            return stopEarly(m_problem, true);
        installExtra();
    }
    if (m_options.toSle) {
        // Without S/L/E the option boxes are left as they are, unlike the Extra errors.
        if (!exists(m_folders.sle()))
            return stopEarly(kkTr("No System/Library/Extensions on selected disk."), false);
        if (!checkBeforeInstalling(m_folders.sle()))
            return stopEarly(m_problem, true);
        installSle();
    }
    if (m_options.toDesktop && !installDesktop())
        return stopEarly(m_problem, true);
    return finish();
}

bool InstallPlan::checkBeforeInstalling(const QString &folder) {
    const QString backups =
        m_options.backup ? KextBackup::backupsFolder(m_paths.desktop()) : QString();
    if (const std::optional<QString> problem =
            InstallPreflight::checkInstall(m_options.bundles, folder, backups)) {
        m_problem = *problem;
        return false;
    }
    return true;
}

void InstallPlan::installExtra() {
    const QString mkext = m_folders.extraMkext();
    const QString extensions = m_folders.extensions();
    if (exists(extensions)) {
        installBundles(extensions, Branch::Extensions);
        repairOwnership(extensions);
        // Loose kexts are packed only when the volume already boots from an mkext; the
        // touch makes the system's own caches notice the change too.
        if (exists(mkext)) {
            run(m_paths.system(QStringLiteral("/usr/bin/touch")), {extensions});
            run(mkextRebuildCommand(m_paths, mkext, extensions));
        }
    }
    const QString kextStore = m_folders.kextStore();
    if (exists(kextStore)) {
        installBundles(kextStore, Branch::KextStore);
        repairOwnership(kextStore);
        // KextStore kexts are only ever loaded from the mkext: it is always rebuilt.
        run(mkextRebuildCommand(m_paths, mkext, kextStore));
    }
}

void InstallPlan::installSle() {
    const QString sle = m_folders.sle();
    installBundles(sle, Branch::Sle);
    run(m_paths.system(QStringLiteral("/usr/bin/touch")), {sle});
    if (lionCacheWanted())
        run(mkextRebuildCommand(m_paths, m_folders.lionStartupMkext(), sle));
    // The system-wide caches belong to the running system and take no volume.
    const bool startedSystem = m_services.isStartedSystem(m_folders.root());
    if (startedSystem && m_options.prelinkKernel) {
        const QString kextcache = m_paths.system(QStringLiteral("/usr/sbin/kextcache"));
        run(kextcache, {QStringLiteral("-system-caches")});
        run(kextcache, {QStringLiteral("-system-prelinked-kernel")});
    }
}

bool InstallPlan::installDesktop() {
    const QString staging = m_paths.desktop() + QStringLiteral("/.mkext_pack");
    const InstallPreflight::StagingCheck check =
        InstallPreflight::checkPacking(m_options.bundles, staging);
    if (!check.problem.isEmpty()) {
        m_problem = check.problem;
        return false;
    }
    // What an interrupted run of ours left would be packed too: it goes first. Its files
    // belong to root by then.
    if (check.staging == InstallPreflight::Staging::Stale)
        run(m_paths.system(QStringLiteral("/bin/rm")), {QStringLiteral("-R"), staging});
    if (!m_executor.simulated() && QDir().mkpath(staging)) {
        QFile mark(staging + QLatin1Char('/') + InstallPreflight::stagingMark());
        mark.open(QIODevice::WriteOnly);
    }
    const int count = int(m_options.bundles.size());
    for (int i = 0; i < count; ++i) {
        m_view.bundleStarted(i, count, m_options.bundles.at(i));
        run(m_paths.system(QStringLiteral("/bin/cp")),
            {QStringLiteral("-R"), m_options.bundles.at(i), staging});
    }
    m_view.setIndeterminate(true);
    repairOwnership(staging);
    run(mkextRebuildCommand(m_paths, m_paths.desktop() + QStringLiteral("/Extensions.mkext"),
                            staging));
    // Without -f: the staging folder is ours and must be there.
    run(m_paths.system(QStringLiteral("/bin/rm")), {QStringLiteral("-R"), staging});
    return true;
}

void InstallPlan::installBundles(const QString &folder, Branch branch) {
    const int count = int(m_options.bundles.size());
    // After a bundle went wrong the others are left alone: whatever failed it (a full
    // volume, most likely) would fail them too, and each attempt removes an old copy.
    for (int i = 0; i < count && m_problem.isEmpty(); ++i) {
        m_view.bundleStarted(i, count, m_options.bundles.at(i));
        installBundle(m_options.bundles.at(i), folder, branch);
    }
    m_view.setIndeterminate(true);
}

bool InstallPlan::installBundle(const QString &bundle, const QString &folder, Branch branch) {
    const QString name = InstallList::bundleName(bundle);
    const QString installed = folder + QLatin1Char('/') + name;
    const bool checks = !m_executor.simulated();
    const bool hadOldCopy = exists(installed);
    m_backupCopy.clear();
    if (m_options.backup && checks && hadOldCopy && !backUp(installed, folder))
        return false;
    // A bundle picked from its own destination is already in place: removing it first
    // would leave nothing to copy.
    if (!isSameFile(bundle, installed)) {
        // Asked again: the old bundle goes only after its backup was made and compared.
        if (exists(installed))
            run(m_paths.system(QStringLiteral("/bin/rm")), {QStringLiteral("-Rf"), installed});
        run(m_paths.system(QStringLiteral("/bin/cp")), {QStringLiteral("-R"), bundle, folder});
        if (checks) {
            if (const std::optional<QString> why = FileTree::difference(bundle, installed, false)) {
                putBack(installed, folder, m_backupCopy, hadOldCopy, *why);
                if (m_backupCopy.isEmpty())
                    return false;
            }
        }
    }
    // The system's folder keeps its own modes; only the new bundle is set.
    if (branch == Branch::Sle)
        repairOwnership(installed);
    return m_problem.isEmpty();
}

bool InstallPlan::backUp(const QString &installed, const QString &folder) {
    const KextBackup::Saved saved = m_backup->save(installed, folder.mid(m_folders.root().size()));
    if (saved.copy.isEmpty()) {
        m_problem = kkTr("%1 was left in place, and nothing more was installed: its backup in "
                         "%2 could not be completed (%3).")
                        .arg(installed, m_backup->runFolder(), saved.error);
        return false;
    }
    m_backupCopy = saved.copy;
    return true;
}

void InstallPlan::putBack(const QString &installed, const QString &folder, const QString &backup,
                          bool hadOldCopy, const QString &why) {
    const QString name = QFileInfo(installed).fileName();
    // A half-copied kext can keep the system from starting: it never stays.
    if (exists(installed))
        run(m_paths.system(QStringLiteral("/bin/rm")), {QStringLiteral("-Rf"), installed});
    const QString failed = kkTr("%1 could not be installed into %2 (%3).").arg(name, folder, why);
    if (!backup.isEmpty()) {
        run(m_paths.system(QStringLiteral("/bin/cp")), {QStringLiteral("-R"), backup, folder});
        const QString backupFolder = QFileInfo(backup).path();
        if (!FileTree::difference(backup, installed, false))
            m_problem = failed + QLatin1Char(' ') +
                        kkTr("The previous copy was put back from %1.").arg(backupFolder);
        else
            m_problem = failed + QLatin1Char(' ') +
                        kkTr("Putting back the previous copy failed too: %1 has no %2 now; "
                             "the previous copy is in %3.")
                            .arg(folder, name, backupFolder);
    } else if (hadOldCopy) {
        m_problem = failed + QLatin1Char(' ') +
                    kkTr("The previous copy was removed before, and there is no backup of it: "
                         "%1 has no %2 now.")
                        .arg(folder, name);
    } else {
        m_problem = failed + QLatin1Char(' ') + kkTr("The incomplete copy was removed.");
    }
}

bool InstallPlan::lionCacheWanted() const {
    return m_options.recreateLionCache && LionCache::volumeIsLion(m_folders);
}

void InstallPlan::repairOwnership(const QString &folder) {
    for (const Command &command : ownershipRepairCommands(m_paths, folder))
        run(command);
}

TaskResult InstallPlan::stopEarly(const QString &message, bool reevaluate) {
    m_view.setControlsEnabled(true);
    m_view.setWorking(false);
    if (reevaluate)
        m_view.reevaluateVolume();
    return TaskResult::failed(message);
}

TaskResult InstallPlan::finish() {
    m_view.setIndeterminate(false);
    m_view.setControlsEnabled(true);
    m_view.reevaluateVolume();
    m_view.setWorking(false);
    if (!m_failed.isEmpty())
        m_view.commandsFailed(m_failed.lines());
    m_view.progressReset();
    TaskResult result = m_problem.isEmpty()
                            ? TaskResult::done(kkTr("Selected tasks were finished."))
                            : TaskResult::failed(m_problem);
    result.commandFailures = m_failed.lines();
    return result;
}

void InstallPlan::run(const QString &tool, const QStringList &args) {
    run(Command{tool, args, true});
}

void InstallPlan::run(const Command &command) {
    m_failed.note(command, m_executor.run(command));
}

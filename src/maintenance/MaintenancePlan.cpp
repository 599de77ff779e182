#include "maintenance/MaintenancePlan.h"

#include "exec/AppServices.h"
#include "exec/Executor.h"
#include "exec/Tr.h"
#include "maintenance/LionCache.h"
#include "maintenance/MaintenanceView.h"
#include "maintenance/MkextRebuild.h"
#include "maintenance/OwnershipRepair.h"

namespace {

// The input check lets a box in the mixed state through; the job does not run it.
bool chosen(Qt::CheckState state) {
    return state != Qt::Unchecked;
}
bool on(Qt::CheckState state) {
    return state == Qt::Checked;
}
} // namespace

MaintenancePlan::MaintenancePlan(MaintenanceOptions options, AppServices &services,
                                 Executor &executor, MaintenanceView &view)
    : m_options(std::move(options)), m_services(services), m_paths(services.paths()),
      m_folders(m_paths.volumeRoot(m_options.volume), m_options.extraVersion), m_executor(executor),
      m_view(view) {}

std::optional<TaskResult> MaintenancePlan::prepare() {
    if (!chosen(m_options.rebuildExtraMkext) && !chosen(m_options.repairExtra) &&
        !chosen(m_options.rebuildCaches) && !chosen(m_options.repairSle)) {
        m_view.setSpinning(false);
        return TaskResult::failed(kkTr("You haven't selected any options."));
    }
    // A refused or cancelled password ends the task without a word.
    if (!m_executor.authorize())
        return TaskResult::failed();
    return std::nullopt;
}

TaskResult MaintenancePlan::run() {
    m_view.rootPathChosen(m_folders.root());
    m_view.setControlsEnabled(false);
    m_view.setWorking(true);
    m_view.setSpinning(true);

    if (on(m_options.repairExtra))
        repairExtra();
    if (on(m_options.rebuildExtraMkext) && !rebuildExtraMkext()) {
        // Nothing to build from: the later tasks are skipped, and the run ends with the
        // reason instead of the usual closing message.
        stopWorking();
        return withFailures(
            TaskResult::failed(kkTr("No Extra/Extensions or Extra/KextStore found.")));
    }
    if (on(m_options.repairSle))
        repairSle();
    if (on(m_options.rebuildCaches))
        rebuildCaches();
    stopWorking();
    return withFailures(TaskResult::done(kkTr("Selected tasks were finished.")));
}

TaskResult MaintenancePlan::withFailures(TaskResult result) const {
    result.commandFailures = m_failed.lines();
    return result;
}

void MaintenancePlan::repairExtra() {
    m_view.setStatus(kkTr("Repairing Extra permissions..."));
    if (exists(m_folders.extensions()))
        repairFolder(m_folders.extensions());
    if (exists(m_folders.kextStore()))
        repairFolder(m_folders.kextStore());
}

bool MaintenancePlan::rebuildExtraMkext() {
    m_view.setStatus(kkTr("Rebuilding Extra mkext..."));
    const bool hasKextStore = exists(m_folders.kextStore());
    const bool hasExtensions = exists(m_folders.extensions());
    if (!hasKextStore && !hasExtensions)
        return false;
    // With both folders the archive is built twice and ends up holding Extensions, the
    // folder the boot loader also reads loose.
    if (hasKextStore)
        run(mkextRebuildCommand(m_paths, m_folders.extraMkext(), m_folders.kextStore()));
    if (hasExtensions) {
        run(QStringLiteral("/usr/bin/touch"), {m_folders.extensions()});
        run(mkextRebuildCommand(m_paths, m_folders.extraMkext(), m_folders.extensions()));
    }
    return true;
}

void MaintenancePlan::repairSle() {
    m_view.setStatus(kkTr("Repairing S/L/E permissions..."));
    repairFolder(m_folders.sle());
    m_view.setStatus(kkTr("Repairing disk permissions..."));
    run(QStringLiteral("/usr/sbin/diskutil"),
        {QStringLiteral("repairpermissions"), m_folders.root()});
}

void MaintenancePlan::rebuildCaches() {
    m_view.setStatus(kkTr("Rebuilding system cache..."));
    // Touching S/L/E makes the system rebuild its caches on the next start.
    run(QStringLiteral("/usr/bin/touch"), {m_folders.sle()});
    if (m_options.recreateLionCache && LionCache::volumeIsLion(m_folders))
        run(mkextRebuildCommand(m_paths, m_folders.lionStartupMkext(), m_folders.sle()));
    // These two rebuild the caches of the running system and take no volume, so they
    // only make sense when the target is the started system.
    if (m_services.isStartedSystem(m_folders.root()) && m_options.prelinkKernel) {
        run(QStringLiteral("/usr/sbin/kextcache"), {QStringLiteral("-system-caches")});
        run(QStringLiteral("/usr/sbin/kextcache"), {QStringLiteral("-system-prelinked-kernel")});
    }
}

void MaintenancePlan::repairFolder(const QString &folder) {
    for (const Command &command : ownershipRepairCommands(m_paths, folder))
        run(command);
}

void MaintenancePlan::stopWorking() {
    m_view.setControlsEnabled(true);
    m_view.setWorking(false);
    m_view.setSpinning(false);
    m_view.setStatus(QString());
    m_view.reevaluateVolume();
    if (!m_failed.isEmpty())
        m_view.commandsFailed(m_failed.lines());
}

bool MaintenancePlan::exists(const QString &path) const {
    return m_executor.exists(path);
}

void MaintenancePlan::run(const QString &tool, const QStringList &args) {
    run(Command{m_paths.system(tool), args, true});
}

void MaintenancePlan::run(const Command &command) {
    m_failed.note(command, m_executor.run(command));
}

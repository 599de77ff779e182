#include "maintenance/MaintenancePlan.h"

#include "exec/Executor.h"
#include "exec/IconAlert.h"
#include "exec/Tr.h"
#include "maintenance/LionCache.h"
#include "maintenance/MaintenanceView.h"
#include "maintenance/MkextRebuild.h"

namespace {

// The input check lets a box in the mixed state through; the job does not run it.
bool chosen(Qt::CheckState state) {
    return state != Qt::Unchecked;
}
bool on(Qt::CheckState state) {
    return state == Qt::Checked;
}
} // namespace

MaintenancePlan::MaintenancePlan(MaintenanceOptions options, const SystemPaths &paths,
                                 Executor &executor, MaintenanceView &view)
    : m_options(std::move(options)), m_paths(paths), m_executor(executor), m_view(view),
      m_isRoot([](const QString &path) { return IconAlert::defaultinst().isRoot(path); }) {}

QString MaintenancePlan::rootPath() const {
    return m_paths.volumeRoot(m_options.volume) + QLatin1Char('/');
}

QString MaintenancePlan::extraBase() const {
    if (m_options.extraVersion.isEmpty())
        return rootPath() + QStringLiteral("Extra");
    return rootPath() + QStringLiteral("Extra/") + m_options.extraVersion;
}

bool MaintenancePlan::prepare() {
    if (!chosen(m_options.rebuildExtraMkext) && !chosen(m_options.repairExtra) &&
        !chosen(m_options.rebuildCaches) && !chosen(m_options.repairSle)) {
        m_view.setSpinning(false);
        m_view.showError(kkTr("You haven't selected any options."));
        return false;
    }
    // A refused or cancelled password ends the task without a word.
    return m_executor.authorize();
}

void MaintenancePlan::run() {
    m_view.rootPathChosen(rootPath());
    m_view.setControlsEnabled(false);
    m_view.setWorking(true);
    m_view.setSpinning(true);

    if (on(m_options.repairExtra))
        repairExtra();
    if (on(m_options.rebuildExtraMkext) && !rebuildExtraMkext()) {
        // Nothing to build from: the later tasks are skipped, and the run ends with the
        // reason instead of the usual closing message.
        m_view.setControlsEnabled(true);
        m_view.setWorking(false);
        m_view.setSpinning(false);
        m_view.setStatus(QString());
        m_view.reevaluateVolume();
        tellFailures();
        m_view.showError(kkTr("No Extra/Extensions or Extra/KextStore found."));
        return;
    }
    if (on(m_options.repairSle))
        repairSle();
    if (on(m_options.rebuildCaches))
        rebuildCaches();
    finish();
}

void MaintenancePlan::repairExtra() {
    m_view.setStatus(kkTr("Repairing Extra permissions..."));
    const QString extensions = extraBase() + QStringLiteral("/Extensions");
    const QString kextStore = extraBase() + QStringLiteral("/KextStore");
    if (exists(extensions))
        repairFolder(extensions);
    if (exists(kextStore))
        repairFolder(kextStore);
}

bool MaintenancePlan::rebuildExtraMkext() {
    m_view.setStatus(kkTr("Rebuilding Extra mkext..."));
    const QString extensions = extraBase() + QStringLiteral("/Extensions");
    const QString kextStore = extraBase() + QStringLiteral("/KextStore");
    const QString mkext = extraBase() + QStringLiteral("/Extensions.mkext");
    const bool hasKextStore = exists(kextStore);
    const bool hasExtensions = exists(extensions);
    if (!hasKextStore && !hasExtensions)
        return false;
    // With both folders the archive is built twice and ends up holding Extensions, the
    // folder the boot loader also reads loose.
    if (hasKextStore)
        run(mkextRebuildCommand(m_paths, mkext, kextStore));
    if (hasExtensions) {
        run(QStringLiteral("/usr/bin/touch"), {extensions});
        run(mkextRebuildCommand(m_paths, mkext, extensions));
    }
    return true;
}

void MaintenancePlan::repairSle() {
    m_view.setStatus(kkTr("Repairing S/L/E permissions..."));
    repairFolder(rootPath() + QStringLiteral("System/Library/Extensions"));
    m_view.setStatus(kkTr("Repairing disk permissions..."));
    run(QStringLiteral("/usr/sbin/diskutil"), {QStringLiteral("repairpermissions"), rootPath()});
}

void MaintenancePlan::rebuildCaches() {
    m_view.setStatus(kkTr("Rebuilding system cache..."));
    const QString sle = rootPath() + QStringLiteral("System/Library/Extensions");
    // Touching S/L/E makes the system rebuild its caches on the next start.
    run(QStringLiteral("/usr/bin/touch"), {sle});
    if (m_options.recreateLionCache && LionCache::volumeIsLion(rootPath()))
        run(mkextRebuildCommand(m_paths, LionCache::startupMkext(rootPath()), sle));
    // These two rebuild the caches of the running system and take no volume, so they
    // only make sense when the target is the started system.
    if (m_isRoot(rootPath()) && m_options.prelinkKernel) {
        run(QStringLiteral("/usr/sbin/kextcache"), {QStringLiteral("-system-caches")});
        run(QStringLiteral("/usr/sbin/kextcache"), {QStringLiteral("-system-prelinked-kernel")});
    }
}

void MaintenancePlan::repairFolder(const QString &folder) {
    run(QStringLiteral("/usr/sbin/chown"), {QStringLiteral("-R"), QStringLiteral("0:0"), folder});
    run(QStringLiteral("/bin/chmod"), {QStringLiteral("-R"), QStringLiteral("755"), folder});
}

void MaintenancePlan::finish() {
    m_view.setControlsEnabled(true);
    m_view.setWorking(false);
    m_view.setSpinning(false);
    m_view.setStatus(QString());
    m_view.reevaluateVolume();
    tellFailures();
    m_view.showInfo(kkTr("Selected tasks were finished."));
}

void MaintenancePlan::tellFailures() {
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

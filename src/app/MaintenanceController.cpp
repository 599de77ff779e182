#include "MaintenanceController.h"

#include "AppSettings.h"
#include "MainWindow.h"
#include "MkextBuilderNotice.h"
#include "TaskReporter.h"
#include "TaskRunner.h"
#include "TovrelAppDelegate.h"
#include "exec/AppServices.h"
#include "exec/FailedCommands.h"
#include "maintenance/MaintenancePlan.h"
#include "pages/MaintenancePage.h"

MaintenanceController::MaintenanceController(TovrelAppDelegate &delegate, AppServices &services,
                                             TaskRunner &tasks)
    : QObject(&delegate), m_delegate(delegate), m_services(services), m_tasks(tasks),
      m_reporter(new TaskReporter(delegate.workingMain, this)) {
    MaintenancePage *page = delegate.maintenancePage();
    connect(page, &MaintenancePage::startClicked, this, &MaintenanceController::bMain);
    connect(m_reporter, &TaskReporter::rootPath, this,
            [this](const QString &rootPath) { m_delegate.rp = rootPath; });
    connect(m_reporter, &TaskReporter::workingChanged, &m_delegate,
            &TovrelAppDelegate::updatePageGuards);
    connect(m_reporter, &TaskReporter::busy, page, &MaintenancePage::setBusy);
    connect(m_reporter, &TaskReporter::spinner, page, &MaintenancePage::setSpinning);
    connect(m_reporter, &TaskReporter::status, page, &MaintenancePage::setStatus);
    connect(m_reporter, &TaskReporter::volumeChanged, this,
            [this] { m_delegate.DiskSelectorMaintenance(nullptr); });
    // The closing text stays the plan's; the status line says that commands failed.
    connect(m_reporter, &TaskReporter::commandFailures, page, [page](const QStringList &failures) {
        page->setStatus(FailedCommands::summary(failures.size()));
    });
}

MaintenanceController::~MaintenanceController() = default;

void MaintenanceController::bMain() {
    // The job disables the button itself, a moment later; a second press in between
    // must not start a second job on the same folders.
    if (m_jobRunning)
        return;
    MaintenanceOptions options = m_delegate.maintenancePage()->options();
    options.extraVersion = m_delegate.ExtraVer;
    options.prelinkKernel = m_delegate.window().prelinkKernel();
    options.recreateLionCache = m_delegate.settings().boolean(AppSettings::lionCacheKey);

    // Each run has its executor, kept alive by the job that uses it.
    std::shared_ptr<Executor> executor = m_services.executor();
    auto plan = std::make_shared<MaintenancePlan>(options, m_services, *executor, *m_reporter);
    // The input check and the password are asked on this thread.
    if (const std::optional<TaskResult> end = plan->prepare()) {
        m_services.alerts().showResult(*end, &m_delegate.window());
        return;
    }
    if (options.rebuildExtraMkext != Qt::Unchecked || options.recreateLionCache)
        showMkextBuilderNotice(m_delegate.window(), m_services.paths());
    m_jobRunning = true;
    m_tasks.start(
        this, [plan, executor] { return plan->run(); },
        [this](const TaskResult &result) {
            m_jobRunning = false;
            m_services.alerts().showResult(result, &m_delegate.window());
        });
}

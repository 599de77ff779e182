#include "MaintenanceController.h"

#include "AppSettings.h"
#include "MainWindow.h"
#include "MkextBuilderNotice.h"
#include "TovrelAppDelegate.h"
#include "exec/AdminAuthentication.h"
#include "exec/FailedCommands.h"
#include "exec/IconAlert.h"
#include "exec/SessionExecutor.h"
#include "maintenance/MaintenancePlan.h"
#include "maintenance/MaintenanceView.h"
#include "pages/MaintenancePage.h"
#include "ui_MainWindow.h"
#include "ui_MaintenancePage.h"

#include <QPointer>
#include <QtConcurrent/QtConcurrentRun>

// The plan's view on the background thread: every effect is queued to the controller on
// the UI thread, so the widgets change in the plan's order. When the window is gone
// before the job ends the remaining effects are dropped.
class MaintenanceController::PostingView final : public MaintenanceView {
public:
    explicit PostingView(MaintenanceController *controller) : m_controller(controller) {}

    void rootPathChosen(const QString &rootPath) override {
        post([rootPath](MaintenanceController &c) { c.m_delegate.rp = rootPath; });
    }
    void setControlsEnabled(bool enabled) override {
        post([enabled](MaintenanceController &c) { c.setControlsEnabled(enabled); });
    }
    void setWorking(bool working) override {
        post([working](MaintenanceController &c) { c.m_delegate.workingMain = working; });
    }
    void setSpinning(bool spinning) override {
        post([spinning](MaintenanceController &c) {
            c.m_delegate.maintenancePage()->ui()->circleMain->setVisible(spinning);
        });
    }
    void setStatus(const QString &text) override {
        post([text](MaintenanceController &c) {
            c.m_delegate.maintenancePage()->ui()->lbMainTask->setText(text);
        });
    }
    void reevaluateVolume() override {
        post([](MaintenanceController &c) { c.m_delegate.DiskSelectorMaintenance(nullptr); });
    }
    void commandsFailed(const QStringList &failures) override {
        const QString status = FailedCommands::summary(failures.size());
        post([status](MaintenanceController &c) {
            c.m_delegate.maintenancePage()->ui()->lbMainTask->setText(status);
        });
    }
    void showError(const QString &message) override {
        post([message](MaintenanceController &c) {
            c.m_jobRunning = false;
            IconAlert::defaultinst().ShowErrorMsg(message, &c.m_delegate.window());
            emit c.jobFinished();
        });
    }
    void showInfo(const QString &message) override {
        post([message](MaintenanceController &c) {
            c.m_jobRunning = false;
            IconAlert::defaultinst().ShowInfoMsg(message, &c.m_delegate.window());
            emit c.jobFinished();
        });
    }

private:
    template <typename Effect> void post(Effect effect) {
        QPointer<MaintenanceController> controller = m_controller;
        if (!controller)
            return;
        QMetaObject::invokeMethod(
            controller.data(),
            [controller, effect] {
                if (controller)
                    effect(*controller);
            },
            Qt::QueuedConnection);
    }
    QPointer<MaintenanceController> m_controller;
};

MaintenanceController::MaintenanceController(TovrelAppDelegate &delegate)
    : QObject(&delegate), m_delegate(delegate),
      m_executor(std::make_shared<SessionExecutor>(AdminAuthentication::sharedInstance())),
      m_isRoot([](const QString &path) { return IconAlert::defaultinst().isRoot(path); }) {
    connect(m_delegate.maintenancePage()->ui()->bMainButton, &QPushButton::clicked, this,
            &MaintenanceController::bMain);
}

MaintenanceController::~MaintenanceController() = default;

void MaintenanceController::bMain() {
    // The job disables the button itself, a moment later; a second press in between
    // must not start a second job on the same folders.
    if (m_jobRunning)
        return;
    auto *page = m_delegate.maintenancePage()->ui();
    MaintenanceOptions options;
    options.volume = page->DiskSelMain->currentText();
    options.extraVersion = m_delegate.ExtraVer;
    options.repairExtra = page->cbERP->checkState();
    options.rebuildExtraMkext = page->cbERM->checkState();
    options.repairSle = page->cbSLERP->checkState();
    options.rebuildCaches = page->cbSLERC->checkState();
    options.prelinkKernel = m_delegate.window().ui()->MI_PrelinkKernel->isChecked();
    options.recreateLionCache = m_delegate.settings().boolean(AppSettings::lionCacheKey);

    auto view = std::make_shared<PostingView>(this);
    auto plan = std::make_shared<MaintenancePlan>(options, m_delegate.paths(), *m_executor, *view);
    plan->setIsRoot(m_isRoot);
    // The input check's alert comes through the view, on this thread.
    if (!plan->prepare())
        return;
    if (options.rebuildExtraMkext != Qt::Unchecked || options.recreateLionCache)
        showMkextBuilderNotice(m_delegate.window(), m_delegate.paths());
    m_jobRunning = true;
    auto executor = m_executor; // kept alive with the plan that refers to it
    (void)QtConcurrent::run([plan, view, executor] { plan->run(); });
}

void MaintenanceController::setControlsEnabled(bool enabled) {
    auto *page = m_delegate.maintenancePage()->ui();
    // In the order the job is known to switch them.
    const QList<QWidget *> controls{page->bMainButton, page->cbSLE,      page->cbSLERP,
                                    page->cbSLERC,     page->cbExtra,    page->cbERP,
                                    page->cbERM,       page->DiskSelMain};
    for (QWidget *control : controls)
        control->setEnabled(enabled);
}

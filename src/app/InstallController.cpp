#include "InstallController.h"

#include "AppSettings.h"
#include "FilePanels.h"
#include "FileViewer.h"
#include "MainWindow.h"
#include "MkextBuilderNotice.h"
#include "TaskReporter.h"
#include "TaskRunner.h"
#include "TovrelAppDelegate.h"
#include "exec/AppServices.h"
#include "exec/FailedCommands.h"
#include "install/InstallPlan.h"
#include "pages/InstallPage.h"

#include <QDir>
#include <QFileInfo>
#include <QPointer>

InstallController::InstallController(TovrelAppDelegate &delegate, AppServices &services,
                                     TaskRunner &tasks, FilePanels &panels)
    : QObject(&delegate), m_delegate(delegate), m_services(services), m_tasks(tasks),
      m_panels(panels), m_reporter(new TaskReporter(delegate.workingInst, this)) {
    m_list.setBusyCheck([this] { return m_delegate.workingInst.load(); });
    InstallPage *page = delegate.installPage();
    page->setList(&m_list);
    connect(page, &InstallPage::browseClicked, this, &InstallController::Browse);
    connect(page, &InstallPage::clearClicked, this, &InstallController::bClear);
    connect(page, &InstallPage::installClicked, this, &InstallController::bInst);
    connect(m_reporter, &TaskReporter::taskStateChanged, this,
            [this](const QString &rootPath, const QString &backupFolder) {
                m_delegate.rp = rootPath;
                m_delegate.datedir = backupFolder;
            });
    connect(m_reporter, &TaskReporter::workingChanged, &m_delegate,
            &TovrelAppDelegate::updatePageGuards);
    connect(m_reporter, &TaskReporter::busy, page, &InstallPage::setBusy);
    connect(m_reporter, &TaskReporter::progressMaximum, page, &InstallPage::prepareProgress);
    connect(m_reporter, &TaskReporter::bundle, page, &InstallPage::showBundleStarted);
    connect(m_reporter, &TaskReporter::progressIndeterminate, page,
            &InstallPage::setProgressIndeterminate);
    connect(m_reporter, &TaskReporter::progressEmptied, page, &InstallPage::resetProgress);
    connect(m_reporter, &TaskReporter::volumeChanged, this,
            [this] { m_delegate.DiskSelectorInstallation(nullptr); });
    // The closing alert lists the failures; the status line says there were some.
    connect(m_reporter, &TaskReporter::commandFailures, this, [this](const QStringList &failures) {
        m_delegate.window().showStatus(FailedCommands::summary(failures.size()));
    });
}

void InstallController::Browse() {
    m_panels.open(FilePanels::Kind::Bundles,
                  [guard = QPointer(this)](int returnCode, const QStringList &paths) {
                      if (guard)
                          guard->OpenKextToInstallPanelDidEnd(returnCode, paths);
                  });
}

void InstallController::OpenKextToInstallPanelDidEnd(int returnCode, const QStringList &paths) {
    if (returnCode != 1)
        return;
    for (const QString &path : paths)
        m_list.append({path});
}

void InstallController::bClear() {
    m_list.clear(m_delegate.installPage()->selectedRows());
    m_delegate.installPage()->clearSelection();
}

void InstallController::bInst() {
    InstallOptions options = m_delegate.installPage()->options();
    options.bundles = m_list.entries();
    options.extraVersion = m_delegate.ExtraVer;
    options.prelinkKernel = m_delegate.window().prelinkKernel();
    options.recreateLionCache = m_delegate.settings().boolean(AppSettings::lionCacheKey);
    install(options);
}

void InstallController::install(const InstallOptions &options) {
    // Each run has its executor, kept alive by the job that uses it.
    std::shared_ptr<Executor> executor = m_services.executor();
    auto plan = std::make_shared<InstallPlan>(options, m_services, *executor, *m_reporter);
    if (const std::optional<TaskResult> end = plan->prepare()) {
        m_services.alerts().showResult(*end, &m_delegate.window());
        return;
    }
    showMkextBuilderNotice(m_delegate.window(), m_services.paths());
    m_tasks.start(
        this, [plan, executor] { return plan->run(); },
        [this, backups = options.backup](const TaskResult &result) {
            m_services.alerts().showResult(result, &m_delegate.window(), backupNote(backups));
        });
}

SheetPresenter::Extra InstallController::backupNote(bool backups) const {
    // The folder is named by the run and made only when something was replaced.
    const QString folder = m_delegate.datedir;
    if (!backups || folder.isEmpty() || !QFileInfo(folder).isDir())
        return {};
    const QString shown = QDir::toNativeSeparators(folder);
    m_delegate.window().showStatus(tr("Backups are in %1.").arg(shown));
    return {tr("The kexts that were replaced are backed up in %1.").arg(shown), tr("Show Backups"),
            [folder] { FileViewer::reveal(folder); }};
}

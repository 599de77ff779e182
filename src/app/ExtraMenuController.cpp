#include "ExtraMenuController.h"

#include "MainWindow.h"
#include "MkextBuilderNotice.h"
#include "SystemImages.h"
#include "TovrelAppDelegate.h"
#include "exec/AppServices.h"
#include "exec/FailedCommands.h"
#include "maintenance/ExtraFolderOperations.h"
#include "pages/MaintenancePage.h"

#include <QAction>
#include <QIcon>
#include <QMessageBox>
#include <QPushButton>

ExtraMenuController::ExtraMenuController(TovrelAppDelegate &delegate, AppServices &services)
    : QObject(&delegate), m_delegate(delegate), m_services(services),
      m_executor(services.executor()),
      m_operations(std::make_unique<ExtraFolderOperations>(services.paths(), *m_executor,
                                                           static_cast<ExtraFolderView &>(*this))) {
    const auto on = [this](const char *name, void (ExtraMenuController::*handler)()) {
        connect(m_delegate.window().action(QLatin1String(name)), &QAction::triggered, this,
                handler);
    };
    on("MI_BringBackEE", &ExtraMenuController::BringBackEE);
    on("MI_CreateEKS", &ExtraMenuController::MI_CreateEKS);
    on("MI_ShowExtra", &ExtraMenuController::ShowExtra);
    on("MI_HideExtra", &ExtraMenuController::HideExtra);
}

ExtraMenuController::~ExtraMenuController() = default;

void ExtraMenuController::BringBackEE() {
    showEnd(m_operations->restoreExtensionsFolder());
}

void ExtraMenuController::MI_CreateEKS() {
    showMkextBuilderNotice(m_delegate.window(), m_services.paths());
    showEnd(m_operations->createKextStore());
}

void ExtraMenuController::ShowExtra() {
    showHiddenEnd(m_operations->showExtraFolder(), tr("Extra is now shown."));
}

void ExtraMenuController::HideExtra() {
    showHiddenEnd(m_operations->hideExtraFolder(), tr("Extra is now hidden."));
}

void ExtraMenuController::showHiddenEnd(const TaskResult &result, const QString &done) {
    showEnd(result);
    // Hiding and showing end without an alert: the status line says it worked, unless a
    // refused password stopped it or the command failed (that has its own alert).
    if (result.ok && !m_commandsFailed)
        m_delegate.window().showStatus(done);
    m_commandsFailed = false;
}

void ExtraMenuController::showEnd(const std::optional<TaskResult> &result) {
    // Empty while the question is open; the answer ends the task without a word.
    if (result)
        m_services.alerts().showResult(*result, &m_delegate.window());
}

QString ExtraMenuController::selectedVolume() const {
    // The maintenance page's volume, whichever page is shown.
    return m_delegate.maintenancePage()->volume();
}

void ExtraMenuController::rootPathChosen(const QString &rootPath) {
    m_delegate.rp = rootPath;
}

void ExtraMenuController::askToContinue(const QString &informativeText,
                                        std::function<void(int)> answered) {
    auto *box = new QMessageBox(&m_delegate.window());
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    // Without a readable icon file the sheet has no icon.
    const QIcon icon = SystemImages(m_delegate.paths())
                           .icon(QStringLiteral("/System/Library/CoreServices/CoreTypes.bundle/"
                                                "Contents/Resources/GenericQuestionMarkIcon.icns"));
    if (!icon.isNull())
        box->setIconPixmap(icon.pixmap(64, 64));
    box->setText(tr("Continue?"));
    box->setInformativeText(informativeText);
    QPushButton *yes = box->addButton(tr("Yes"), QMessageBox::AcceptRole);
    box->addButton(tr("No"), QMessageBox::RejectRole);
    box->setDefaultButton(yes);
    m_question = box;
    connect(box, &QMessageBox::finished, this, [this, box, yes, answered] {
        if (m_question == box)
            m_question = nullptr;
        // The first button answers yes; the other one, Escape or closing the sheet, no.
        answered(box->clickedButton() == yes ? yesCode : noCode);
    });
    box->open();
}

void ExtraMenuController::commandsFailed(const QStringList &failures) {
    m_commandsFailed = true;
    // These operations end without a word when all is well; failures get an alert.
    m_delegate.window().showStatus(FailedCommands::summary(failures.size()));
    TaskResult result = TaskResult::failed();
    result.commandFailures = failures;
    m_services.alerts().showResult(result, &m_delegate.window());
}

void ExtraMenuController::reevaluateVolume() {
    m_delegate.DiskSelectorMaintenance(nullptr);
}

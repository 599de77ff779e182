#include "ExtraMenuController.h"

#include "MainWindow.h"
#include "MkextBuilderNotice.h"
#include "SystemImages.h"
#include "TovrelAppDelegate.h"
#include "exec/AdminAuthentication.h"
#include "exec/FailedCommands.h"
#include "exec/IconAlert.h"
#include "exec/SessionExecutor.h"
#include "maintenance/ExtraFolderOperations.h"
#include "pages/MaintenancePage.h"
#include "ui_MainWindow.h"
#include "ui_MaintenancePage.h"

#include <QIcon>
#include <QMessageBox>
#include <QPushButton>

ExtraMenuController::ExtraMenuController(TovrelAppDelegate &delegate)
    : QObject(&delegate), m_delegate(delegate) {
    setExecutor(std::make_shared<SessionExecutor>(AdminAuthentication::sharedInstance()));
    auto *menu = m_delegate.window().ui();
    connect(menu->MI_BringBackEE, &QAction::triggered, this, &ExtraMenuController::BringBackEE);
    connect(menu->MI_CreateEKS, &QAction::triggered, this, &ExtraMenuController::MI_CreateEKS);
    connect(menu->MI_ShowExtra, &QAction::triggered, this, &ExtraMenuController::ShowExtra);
    connect(menu->MI_HideExtra, &QAction::triggered, this, &ExtraMenuController::HideExtra);
}

ExtraMenuController::~ExtraMenuController() = default;

void ExtraMenuController::setExecutor(std::shared_ptr<Executor> executor) {
    m_executor = std::move(executor);
    m_operations = std::make_unique<ExtraFolderOperations>(m_delegate.paths(), *m_executor,
                                                           static_cast<ExtraFolderView &>(*this));
}

void ExtraMenuController::BringBackEE() {
    m_operations->BringBackEE();
}

void ExtraMenuController::MI_CreateEKS() {
    showMkextBuilderNotice(m_delegate.window(), m_delegate.paths());
    m_operations->MI_CreateEKS();
}

void ExtraMenuController::ShowExtra() {
    m_operations->ShowExtra();
}

void ExtraMenuController::HideExtra() {
    m_operations->HideExtra();
}

QString ExtraMenuController::selectedVolume() const {
    // The maintenance page's volume, whichever page is shown.
    return m_delegate.maintenancePage()->ui()->DiskSelMain->currentText();
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

void ExtraMenuController::showError(const QString &message) {
    IconAlert::defaultinst().ShowErrorMsg(message, &m_delegate.window());
}

void ExtraMenuController::commandsFailed(const QStringList &failures) {
    showError(FailedCommands::summary(failures.size()) + QStringLiteral(":\n") +
              failures.join(QLatin1Char('\n')));
}

void ExtraMenuController::reevaluateVolume() {
    m_delegate.DiskSelectorMaintenance(nullptr);
}

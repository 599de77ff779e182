#include "RestoreController.h"

#include "InstallController.h"
#include "MainWindow.h"
#include "RestoreDialog.h"
#include "TovrelAppDelegate.h"
#include "exec/AppServices.h"
#include "exec/TaskResult.h"
#include "install/BackupRestore.h"

#include <QAction>
#include <QMessageBox>
#include <QPushButton>

RestoreController::RestoreController(TovrelAppDelegate &delegate, AppServices &services,
                                     InstallController &install)
    : QObject(&delegate), m_delegate(delegate), m_services(services), m_install(install) {
    connect(delegate.window().action(QStringLiteral("MI_RestoreBackup")), &QAction::triggered, this,
            &RestoreController::MI_RestoreBackup);
}

void RestoreController::MI_RestoreBackup() {
    // A restore is an installation: not while one runs.
    if (m_delegate.workingInst) {
        m_services.alerts().showResult(
            TaskResult::failed(tr("An installation is running. Restore when it has ended.")),
            &m_delegate.window());
        return;
    }
    auto *dialog =
        new RestoreDialog(BackupRestore::list(m_services.paths().desktop()), &m_delegate.window());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    connect(dialog, &QDialog::accepted, this, [this, dialog] {
        const std::optional<BackupRestore::Backup> backup = dialog->chosen();
        if (!backup)
            return;
        const BackupRestore::Plan plan = m_delegate.restorePlan(*backup);
        if (!plan.problem.isEmpty()) {
            m_services.alerts().showResult(TaskResult::failed(plan.problem), &m_delegate.window());
            return;
        }
        auto *box = new QMessageBox(&m_delegate.window());
        box->setObjectName(QStringLiteral("restoreQuestion"));
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->setWindowModality(Qt::WindowModal);
        box->setText(tr("Continue?"));
        box->setInformativeText(
            tr("Do you want to put back %n kext(s) from %1 into %2? What they replace there is "
               "backed up first.",
               nullptr, int(plan.options.bundles.size()))
                .arg(backup->name(), plan.folder));
        QPushButton *yes = box->addButton(tr("Yes"), QMessageBox::AcceptRole);
        box->addButton(tr("No"), QMessageBox::RejectRole);
        box->setDefaultButton(yes);
        connect(box, &QMessageBox::finished, this, [this, box, yes, options = plan.options] {
            if (box->clickedButton() == yes)
                m_install.install(options);
        });
        box->open();
    });
    dialog->open();
}

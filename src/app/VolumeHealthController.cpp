#include "VolumeHealthController.h"

#include "DoctorSetup.h"
#include "InstallController.h"
#include "MainWindow.h"
#include "MaintenanceController.h"
#include "TaskRunner.h"
#include "TovrelAppDelegate.h"
#include "doctor/DoctorFixes.h"
#include "doctor/DoctorReport.h"
#include "doctor/KextRemoval.h"
#include "exec/AppServices.h"
#include "install/BackupRestore.h"
#include "pages/InstallPage.h"
#include "pages/MaintenancePage.h"

#include <QAction>
#include <QDateTime>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>

using Fix = DoctorFinding::Fix;

VolumeHealthController::VolumeHealthController(TovrelAppDelegate &delegate, AppServices &services,
                                               TaskRunner &tasks)
    : QObject(&delegate), m_delegate(delegate), m_services(services), m_tasks(tasks) {
    connect(delegate.window().action(QStringLiteral("MI_VolumeHealth")), &QAction::triggered, this,
            &VolumeHealthController::MI_VolumeHealth);
    // A fix's task has ended (its alert is shown): what it changed is looked at again.
    connect(&tasks, &TaskRunner::taskEnded, this, [this] {
        if (!m_fixing)
            return;
        m_fixing = false;
        check();
    });
}

VolumeHealthController::~VolumeHealthController() = default;

void VolumeHealthController::MI_VolumeHealth() {
    if (!m_window) {
        m_window = new VolumeHealthWindow(&m_delegate.window());
        connect(m_window, &VolumeHealthWindow::checkAgain, this, &VolumeHealthController::check);
        connect(m_window, &VolumeHealthWindow::actionRequested, this, &VolumeHealthController::act);
    }
    m_volume = m_delegate.maintenancePage()->volume();
    m_version = m_delegate.ExtraVer;
    m_window->show();
    m_window->raise();
    check();
}

void VolumeHealthController::check() {
    if (!m_window || m_volume.isEmpty())
        return;
    m_window->showChecking(m_volume);
    auto result = std::make_shared<KextDoctor::Result>();
    const KextDoctor::Options options =
        DoctorSetup::options(m_services.paths(), m_volume, m_version);
    m_tasks.start(
        this,
        [options, result] {
            *result = KextDoctor::run(options);
            return TaskResult::done();
        },
        [this, result](const TaskResult &) {
            m_result = *result;
            if (m_window)
                m_window->showFindings(DoctorReport::summary(m_result, m_volume),
                                       m_services.paths().volumeRoot(m_volume), m_result.findings,
                                       buttons());
            emit checked();
        });
}

QList<QList<VolumeHealthWindow::Button>> VolumeHealthController::buttons() const {
    QList<QList<VolumeHealthWindow::Button>> all;
    for (const DoctorFinding &finding : m_result.findings) {
        QList<VolumeHealthWindow::Button> row;
        if (DoctorFinding::isMaintenance(finding.fix)) {
            QString name = DoctorFinding::fixText(finding.fix).section(QStringLiteral(" ("), 0, 0);
            name[0] = name.at(0).toUpper();
            row.append({Action::Maintain, name});
        } else if (finding.fix == Fix::RemoveCopy) {
            row.append({Action::Remove, tr("Move to Backups")});
        } else if (finding.fix == Fix::Reinstall) {
            if (backupOf(finding))
                row.append({Action::Restore, tr("Restore")});
            row.append({Action::Install, tr("Install...")});
            row.append({Action::Remove, tr("Move to Backups")});
        }
        all.append(row);
    }
    return all;
}

void VolumeHealthController::act(int index, Action action) {
    if (m_fixing || index < 0 || index >= m_result.findings.size())
        return;
    const DoctorFinding finding = m_result.findings.at(index);
    switch (action) {
    case Action::Maintain:
        return maintain(finding);
    case Action::Remove:
        return remove(finding);
    case Action::Restore:
        return restore(finding);
    case Action::Install:
        return install(finding);
    }
}

void VolumeHealthController::maintain(const DoctorFinding &finding) {
    const MaintenanceOptions tasks = DoctorFixes::maintenance({finding}, m_volume, m_version);
    ask(tr("%1 on %2? The maintenance page runs it with its box ticked.")
            .arg(DoctorFixes::taskNames(tasks).join(QStringLiteral(", ")), m_volume),
        [this, tasks] {
            MaintenancePage *page = m_delegate.maintenancePage();
            if (page->volume() != m_volume) {
                page->selectVolume(m_volume);
                m_delegate.DiskSelectorMaintenance(nullptr);
            }
            m_delegate.MenuMain();
            page->setTasks(tasks);
            auto *controller = m_delegate.findChild<MaintenanceController *>();
            startFix([controller] {
                if (controller)
                    controller->bMain();
            });
        });
}

void VolumeHealthController::remove(const DoctorFinding &finding) {
    const QString path = finding.path;
    ask(tr("Move %1 out of its folder, into Kext Backups on the desktop? Restore can put it "
           "back.")
            .arg(path),
        [this, path] {
            std::shared_ptr<Executor> executor = m_services.executor();
            // A refused password ends the fix without a word.
            if (!executor->authorize())
                return;
            auto removal = std::make_shared<KextRemoval>(m_services.paths(), *executor, m_volume,
                                                         m_version, QDateTime::currentDateTime());
            startFix([this, removal, executor, path] {
                m_tasks.start(
                    this,
                    [removal, executor, path] {
                        const QString problem = removal->remove(path);
                        return problem.isEmpty()
                                   ? TaskResult::done(tr("%1 was moved to Kext Backups.")
                                                          .arg(QFileInfo(path).fileName()))
                                   : TaskResult::failed(problem);
                    },
                    [this](const TaskResult &result) {
                        m_services.alerts().showResult(result, m_window);
                    });
            });
        });
}

std::optional<QString> VolumeHealthController::backupOf(const DoctorFinding &finding) const {
    const QString root = m_services.paths().volumeRoot(m_volume) + QLatin1Char('/');
    const QFileInfo kext(finding.kext);
    const QString from = kext.path().startsWith(root) ? kext.path().mid(root.size()) : QString();
    QList<BackupRestore::Backup> backups = BackupRestore::list(m_services.paths().desktop());
    for (auto it = backups.crbegin(); it != backups.crend(); ++it) {
        if (!it->manifest || it->manifest->volume != m_volume)
            continue;
        for (const BackupManifest::Bundle &bundle : it->manifest->bundles) {
            if (bundle.name == kext.fileName() && bundle.removedFrom == from)
                return it->folder;
        }
    }
    return std::nullopt;
}

void VolumeHealthController::restore(const DoctorFinding &finding) {
    const std::optional<QString> folder = backupOf(finding);
    const std::optional<BackupRestore::Backup> backup =
        folder ? BackupRestore::find(m_services.paths().desktop(), *folder) : std::nullopt;
    if (!backup)
        return;
    const BackupRestore::Plan plan = m_delegate.restorePlan(*backup);
    if (!plan.problem.isEmpty()) {
        m_services.alerts().showResult(TaskResult::failed(plan.problem), m_window);
        return;
    }
    ask(tr("Put back %n kext(s) from %1 into %2? What they replace is backed up first.", nullptr,
           int(plan.options.bundles.size()))
            .arg(backup->name(), plan.folder),
        [this, options = plan.options] {
            auto *controller = m_delegate.findChild<InstallController *>();
            startFix([controller, options] {
                if (controller)
                    controller->install(options);
            });
        });
}

void VolumeHealthController::install(const DoctorFinding &finding) {
    // The installation page, on this volume and towards the kext's folder; the good copy
    // is the user's to choose.
    m_delegate.MenuInst();
    InstallPage *page = m_delegate.installPage();
    if (page->volume() != m_volume) {
        page->selectVolume(m_volume);
        m_delegate.DiskSelectorInstallation(nullptr);
    }
    page->chooseDestination(finding.kext.startsWith(m_services.paths().volumeRoot(m_volume) +
                                                    QStringLiteral("/System/")));
    m_delegate.window().raise();
    m_delegate.window().activateWindow();
    if (auto *controller = m_delegate.findChild<InstallController *>())
        controller->Browse();
}

void VolumeHealthController::startFix(const std::function<void()> &start) {
    const int running = m_tasks.running();
    m_fixing = true;
    if (m_window)
        m_window->setFixing(true);
    start();
    // Refused before it began (no option, no password): nothing will end.
    if (m_tasks.running() == running) {
        m_fixing = false;
        if (m_window)
            m_window->setFixing(false);
    }
}

void VolumeHealthController::ask(const QString &informativeText, std::function<void()> yes) {
    auto *box = new QMessageBox(m_window ? static_cast<QWidget *>(m_window)
                                         : static_cast<QWidget *>(&m_delegate.window()));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    box->setIcon(QMessageBox::Question);
    box->setText(tr("Continue?"));
    box->setInformativeText(informativeText);
    QPushButton *accept = box->addButton(tr("Yes"), QMessageBox::AcceptRole);
    box->addButton(tr("No"), QMessageBox::RejectRole);
    box->setDefaultButton(accept);
    m_question = box;
    connect(box, &QMessageBox::finished, this, [this, box, accept, yes] {
        if (m_question == box)
            m_question = nullptr;
        if (box->clickedButton() == accept)
            yes();
    });
    box->open();
}

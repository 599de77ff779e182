#pragma once

#include "VolumeHealthWindow.h"
#include "doctor/KextDoctor.h"

#include <QObject>
#include <QPointer>
#include <functional>
#include <optional>

class AppServices;
class QMessageBox;
class TaskRunner;
class TovrelAppDelegate;

// The Extra menu's Volume Health window: runs the kext doctor on the maintenance page's
// volume (in its version folder) on the task runner and shows the findings; each fix
// button starts the task that already exists for it, after a question: the maintenance
// page with its boxes ticked, a removal into the backups, a restore of a backup, or the
// installation page made ready for a good copy. When the task has ended the volume is
// checked again.
class VolumeHealthController : public QObject {
    Q_OBJECT
public:
    VolumeHealthController(TovrelAppDelegate &delegate, AppServices &services, TaskRunner &tasks);
    ~VolumeHealthController() override;

    VolumeHealthWindow *healthWindow() const { return m_window; }
    // The question open now, if any (tests answer it).
    QMessageBox *openQuestion() const { return m_question; }
    const KextDoctor::Result &result() const { return m_result; }

public slots:
    void MI_VolumeHealth();
    void check();

signals:
    // The findings on screen are those of a check that has just ended.
    void checked();

private:
    using Action = VolumeHealthWindow::Action;
    void act(int finding, Action action);
    void maintain(const DoctorFinding &finding);
    void remove(const DoctorFinding &finding);
    void restore(const DoctorFinding &finding);
    void install(const DoctorFinding &finding);
    // Asks "Continue?" on the window; `yes` runs on the answer Yes.
    void ask(const QString &informativeText, std::function<void()> yes);
    // Runs `start`; when it handed a task to the runner, its end checks the volume again.
    void startFix(const std::function<void()> &start);
    QList<QList<VolumeHealthWindow::Button>> buttons() const;
    // The newest backup on the desktop holding this kext, taken from where it lies now.
    std::optional<QString> backupOf(const DoctorFinding &finding) const;

    TovrelAppDelegate &m_delegate;
    AppServices &m_services;
    TaskRunner &m_tasks;
    QPointer<VolumeHealthWindow> m_window;
    QString m_volume;
    QString m_version;
    KextDoctor::Result m_result;
    bool m_fixing = false;
    QMessageBox *m_question = nullptr;
};

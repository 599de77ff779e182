#pragma once

#include <QObject>
#include <atomic>

class AppServices;
class TaskReporter;
class TaskRunner;
class TovrelAppDelegate;

// The maintenance page's button: reads the page into options, checks them and asks for
// root on the UI thread, then hands the plan to the task runner. The plan's effects come
// back to the page in the order the plan made them; its end is the closing alert.
class MaintenanceController : public QObject {
    Q_OBJECT
public:
    MaintenanceController(TovrelAppDelegate &delegate, AppServices &services, TaskRunner &tasks);
    ~MaintenanceController() override;

    // Whether a job was handed to the runner and has not ended yet.
    bool jobRunning() const { return m_jobRunning; }

public slots:
    void bMain();

private:
    TovrelAppDelegate &m_delegate;
    AppServices &m_services;
    TaskRunner &m_tasks;
    TaskReporter *m_reporter;
    bool m_jobRunning = false;
};

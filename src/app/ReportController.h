#pragma once

#include <QObject>

class AppServices;
class FilePanels;
class MainWindow;
class TaskRunner;

// The system report from the window: a save panel named after the computer, then the
// report's jobs through the task runner and "Saved." (or the reason it was abandoned) on
// the window when they end.
class ReportController : public QObject {
    Q_OBJECT
public:
    ReportController(MainWindow &window, AppServices &services, TaskRunner &tasks,
                     FilePanels &panels, QObject *parent = nullptr);

public slots:
    void CreateList();
    void SaveTXT(int returnCode, const QString &file);

private:
    MainWindow &m_window;
    AppServices &m_services;
    TaskRunner &m_tasks;
    FilePanels &m_panels;
};

#pragma once

#include <QObject>

class AppServices;
class FilePanels;
class LoadedPageController;
class MainWindow;
class ReportController;
class TaskRunner;

// Runs the loaded kexts page (page 4) and the system report.
class LoadedDelegate : public QObject {
    Q_OBJECT
public:
    LoadedDelegate(MainWindow &window, AppServices &services, TaskRunner &tasks, FilePanels &panels,
                   QObject *parent = nullptr);

    LoadedPageController *pageController() const { return m_pageController; }

public slots:
    // Refreshes the list and shows the page.
    void TI_Loaded();
    // The menu's way in: the toolbar item follows.
    void MI_Loaded();

private:
    MainWindow &m_window;
    LoadedPageController *m_pageController;
    ReportController *m_reportController;
};

#include "LogController.h"

#include "LogWindow.h"
#include "MainWindow.h"
#include "exec/AppServices.h"

#include <QAction>

LogController::LogController(MainWindow &window, AppServices &services, QObject *parent)
    : QObject(parent), m_window(window), m_services(services) {
    connect(window.action(QStringLiteral("MI_ShowLog")), &QAction::triggered, this,
            &LogController::showLog);
    // Made now, so it follows the journal from the start.
    logWindow();
}

LogController::~LogController() = default;

LogWindow *LogController::logWindow() {
    if (!m_log) {
        CommandJournal &journal = m_services.journal() ? *m_services.journal() : m_none;
        // A window of its own beside the main window; owned by it, so closing the main
        // window still ends the program.
        m_log = new LogWindow(journal, m_services.dryRun(), &m_window);
    }
    return m_log;
}

void LogController::showLog() {
    LogWindow *log = logWindow();
    log->show();
    log->raise();
    log->activateWindow();
}

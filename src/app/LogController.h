#pragma once

#include "exec/CommandJournal.h"

#include <QObject>
#include <QPointer>

class AppServices;
class LogWindow;
class MainWindow;

// Window > Log (Ctrl+L): opens the Log window on the program's journal, made on first use
// and kept, so it goes on listing the commands while it is closed.
class LogController : public QObject {
    Q_OBJECT
public:
    LogController(MainWindow &window, AppServices &services, QObject *parent);
    ~LogController() override;

    LogWindow *logWindow();

public slots:
    void showLog();

private:
    MainWindow &m_window;
    AppServices &m_services;
    CommandJournal m_none; // shown where the services keep no journal
    QPointer<LogWindow> m_log;
};

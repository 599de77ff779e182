#pragma once

#include "exec/SheetPresenter.h"

#include "install/InstallList.h"
#include "install/InstallOptions.h"

#include <QObject>
#include <QStringList>

class AppServices;
class FilePanels;
class TaskReporter;
class TaskRunner;
class TovrelAppDelegate;

// The installation page: the install list shown by its table, the buttons that fill
// and empty it, and the install button that hands the installation to the task runner.
class InstallController : public QObject {
    Q_OBJECT
public:
    InstallController(TovrelAppDelegate &delegate, AppServices &services, TaskRunner &tasks,
                      FilePanels &panels);

    // The install list (the table's model).
    InstallList &instkexts() { return m_list; }
    // Runs an installation the page did not set up (a restore of a backup), with the
    // page's progress and the same checks, password and closing alert.
    void install(const InstallOptions &options);

public slots:
    void Browse();
    void OpenKextToInstallPanelDidEnd(int returnCode, const QStringList &paths);
    void bClear();
    void bInst();

private:
    // The backup folder of the run that ended, for its closing sheet.
    SheetPresenter::Extra backupNote(bool backups) const;
    TovrelAppDelegate &m_delegate;
    AppServices &m_services;
    TaskRunner &m_tasks;
    FilePanels &m_panels;
    TaskReporter *m_reporter;
    InstallList m_list;
};

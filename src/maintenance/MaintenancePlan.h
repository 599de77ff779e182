#pragma once

#include "exec/FailedCommands.h"
#include "exec/TaskResult.h"
#include "maintenance/MaintenanceOptions.h"
#include "volumes/KextFolders.h"
#include "volumes/SystemPaths.h"

#include <QString>
#include <QStringList>
#include <optional>

class AppServices;
class Executor;
class MaintenanceView;

// The maintenance page's job: repair the owners and modes of the Extra kext folders,
// rebuild the Extra mkext, repair S/L/E and the disk's permissions, rebuild the system's
// kext caches, in that order. Every command runs as root; a failing command never stops
// the ones after it, and the failures are told beside the closing text.
class MaintenancePlan {
public:
    MaintenancePlan(MaintenanceOptions options, AppServices &services, Executor &executor,
                    MaintenanceView &view);

    // On the UI thread, before the job: refuses a run without any task, then asks for
    // root. Empty when the job may run; otherwise how the task ended (silently when root
    // was refused).
    std::optional<TaskResult> prepare();
    // The job itself, on a background thread.
    TaskResult run();

private:
    void repairExtra();
    bool rebuildExtraMkext();
    void repairSle();
    void rebuildCaches();
    void repairFolder(const QString &folder);
    void stopWorking();
    TaskResult withFailures(TaskResult result) const;
    bool exists(const QString &path) const;
    void run(const QString &tool, const QStringList &args);
    void run(const Command &command);

    MaintenanceOptions m_options;
    AppServices &m_services;
    SystemPaths m_paths;
    KextFolders m_folders;
    Executor &m_executor;
    MaintenanceView &m_view;
    FailedCommands m_failed;
};

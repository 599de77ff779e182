#pragma once

#include "exec/FailedCommands.h"
#include "maintenance/MaintenanceOptions.h"
#include "volumes/SystemPaths.h"

#include <QString>
#include <QStringList>
#include <functional>

class Executor;
class MaintenanceView;

// The maintenance page's job: repair the owners and modes of the Extra kext folders,
// rebuild the Extra mkext, repair S/L/E and the disk's permissions, rebuild the system's
// kext caches, in that order. Every command runs as root; a failing command never stops
// the ones after it, and the failures are told beside the closing text.
class MaintenancePlan {
public:
    MaintenancePlan(MaintenanceOptions options, const SystemPaths &paths, Executor &executor,
                    MaintenanceView &view);

    // Whether a path is the mount point of the started system (diskutil by default).
    void setIsRoot(std::function<bool(const QString &)> isRoot) { m_isRoot = std::move(isRoot); }

    // On the UI thread, before the job: refuses a run without any task with an alert,
    // then asks for root; false (nothing shown, nothing changed) when refused.
    bool prepare();
    // The job itself, on a background thread.
    void run();

    // The target root with its trailing slash, as the commands use it.
    QString rootPath() const;
    // Extra itself or its version folder, without a trailing slash.
    QString extraBase() const;

private:
    void repairExtra();
    bool rebuildExtraMkext();
    void repairSle();
    void rebuildCaches();
    void repairFolder(const QString &folder);
    void finish();
    void tellFailures();
    bool exists(const QString &path) const;
    void run(const QString &tool, const QStringList &args);
    void run(const Command &command);

    MaintenanceOptions m_options;
    SystemPaths m_paths;
    Executor &m_executor;
    MaintenanceView &m_view;
    std::function<bool(const QString &)> m_isRoot;
    FailedCommands m_failed;
};

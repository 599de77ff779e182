#pragma once

#include "install/InstallOptions.h"
#include "volumes/SystemPaths.h"

#include <QDateTime>
#include <QString>
#include <functional>

class Executor;
class InstallView;

// Installs the bundles of the install list into the Extra folder of a volume (its
// Extensions or its KextStore), into the volume's System/Library/Extensions, or packs
// them into a new Extensions.mkext on the desktop. Every change inside a volume is a
// root command; the results are not examined, the plan always goes on. Only the backup
// copies and the desktop staging folder are made as the user.
class InstallPlan {
public:
    InstallPlan(InstallOptions options, const SystemPaths &paths, Executor &executor,
                InstallView &view);

    // Whether a path is the mount point of the started system (diskutil by default).
    void setIsRoot(std::function<bool(const QString &)> isRoot) { m_isRoot = std::move(isRoot); }
    // Names this run's backup folder (the system clock by default).
    void setClock(std::function<QDateTime()> clock) { m_clock = std::move(clock); }
    // Leaves the user's files alone (no backups, no staging folder): for --dry-run.
    void setTouchUserFiles(bool touch) { m_touchUserFiles = touch; }

    // On the UI thread, before the job: refuses an empty list with an alert, then asks
    // for root; false (and nothing changed) when the job must not run.
    bool prepare();
    // The job itself, on a background thread.
    void run();

    // The target root path with its trailing slash, as the commands use it.
    QString rootPath() const;
    // The Extra base folder: Extra itself or its version folder.
    QString extraBase() const;

private:
    enum class Branch { Extensions, KextStore, Sle };
    void installExtra();
    bool installSle();
    void installDesktop();
    void installBundles(const QString &folder, Branch branch);
    void installBundle(const QString &bundle, const QString &folder, Branch branch);
    void stopEarly(const QString &message, bool reevaluate);
    void finish();
    bool lionCacheWanted() const;
    void run(const QString &tool, const QStringList &args);

    InstallOptions m_options;
    SystemPaths m_paths;
    Executor &m_executor;
    InstallView &m_view;
    std::function<bool(const QString &)> m_isRoot;
    std::function<QDateTime()> m_clock;
    bool m_touchUserFiles = true;
    QString m_datedir;
};

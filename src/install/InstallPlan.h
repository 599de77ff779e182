#pragma once

#include "exec/FailedCommands.h"
#include "exec/TaskResult.h"
#include "install/InstallOptions.h"
#include "install/KextBackup.h"
#include "volumes/KextFolders.h"
#include "volumes/SystemPaths.h"

#include <QDateTime>
#include <QString>
#include <functional>
#include <optional>

class AppServices;
class Executor;
class InstallView;

// Installs the bundles of the install list into the Extra folder of a volume (its
// Extensions or its KextStore), into the volume's System/Library/Extensions, or packs
// them into a new Extensions.mkext on the desktop. Every change inside a volume is a
// root command; only the backup copies and the desktop staging folder are made as the
// user. Around the commands it checks what a careful administrator would: a preflight
// before the first of them, each backup compared with its original before the original
// is removed, each installed bundle compared with its source and put back from the
// backup when the copy failed. When all is well the commands are exactly the plain ones.
class InstallPlan {
public:
    InstallPlan(InstallOptions options, AppServices &services, Executor &executor,
                InstallView &view);
    // Names this run's backup folder (the system clock by default).
    void setClock(std::function<QDateTime()> clock) { m_clock = std::move(clock); }

    // On the UI thread, before the job: refuses an empty list, then asks for root. Empty
    // when the job may run; otherwise how the task ended (silently when root was refused).
    std::optional<TaskResult> prepare();
    // The job itself, on a background thread.
    TaskResult run();

private:
    enum class Branch { Extensions, KextStore, Sle };
    bool exists(const QString &path) const;
    bool checkBeforeInstalling(const QString &folder);
    void installExtra();
    void installSle();
    bool installDesktop();
    void installBundles(const QString &folder, Branch branch);
    bool installBundle(const QString &bundle, const QString &folder, Branch branch);
    bool backUp(const QString &installed, const QString &folder);
    void putBack(const QString &installed, const QString &folder, const QString &backup,
                 bool hadOldCopy, const QString &why);
    TaskResult stopEarly(const QString &message, bool reevaluate);
    TaskResult finish();
    bool lionCacheWanted() const;
    void repairOwnership(const QString &folder);
    void run(const QString &tool, const QStringList &args);
    void run(const Command &command);

    InstallOptions m_options;
    AppServices &m_services;
    SystemPaths m_paths;
    KextFolders m_folders;
    Executor &m_executor;
    InstallView &m_view;
    std::function<QDateTime()> m_clock;
    QString m_datedir;
    std::optional<KextBackup> m_backup;
    QString m_backupCopy; // the last bundle's backup, for putting it back
    FailedCommands m_failed;
    QString m_problem; // what went wrong with a bundle; the run ends with it
};

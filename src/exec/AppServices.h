#pragma once

#include "exec/Alerts.h"
#include "exec/Executor.h"
#include "exec/IconAlert.h"
#include "exec/RootScript.h"
#include "volumes/KextLocationIndex.h"
#include "volumes/SystemPaths.h"

#include <QString>
#include <functional>
#include <memory>

class AdminAuthentication;
class CommandJournal;

// The collaborators every part of the program shares, built once at start-up (each test
// builds its own) and handed to the controllers, verbs and plans that need them: where
// the system is, how a task's root commands run, how a task's end reaches the user, the
// kext location index, and whether a volume is the started system. Past start-up none of
// them is reached through a global.
class AppServices {
public:
    using ExecutorFactory = std::function<std::shared_ptr<Executor>()>;
    using StartedSystemCheck = std::function<bool(const QString &path)>;

    AppServices(const SystemPaths &paths, AdminAuthentication &session,
                Alerts alerts = Alerts(nullptr, nullptr));
    AppServices(const AppServices &) = delete;
    AppServices &operator=(const AppServices &) = delete;

    const SystemPaths &paths() const { return m_paths; }
    Alerts &alerts() { return m_alerts; }
    RootScript &rootScript() { return m_rootScript; }
    KextLocationIndex &index() { return m_index; }
    // The same services under the names the window's handlers know them by.
    IconAlert iconAlert() { return IconAlert(*this); }

    // A fresh executor for one task's root sequence: the privileged session, unless
    // start-up (--dry-run) or a test put another factory in.
    std::shared_ptr<Executor> executor() const { return m_executors(); }
    void setExecutorFactory(ExecutorFactory factory) { m_executors = std::move(factory); }

    // Whether the path is the mount point of the started system: `diskutil info`, unless
    // a test answers.
    bool isStartedSystem(const QString &path) const { return m_startedSystem(path); }
    void setStartedSystemCheck(StartedSystemCheck check) { m_startedSystem = std::move(check); }

    // The journal root commands are recorded in, and the Log window shows (none when a
    // test sets none).
    CommandJournal *journal() const { return m_journal; }
    void setJournal(CommandJournal *journal) { m_journal = journal; }
    // Started with --dry-run: root commands are listed in the Log instead of being run.
    bool dryRun() const { return m_dryRun; }
    // Makes this a dry run: every task's root commands go to the journal as planned ones
    // (this run's entries, never its file), through one executor for the whole session so
    // each plan sees what the earlier ones would have left.
    void planOnly(CommandJournal &journal);

private:
    SystemPaths m_paths;
    AdminAuthentication &m_session;
    Alerts m_alerts;
    RootScript m_rootScript;
    KextLocationIndex m_index;
    ExecutorFactory m_executors;
    StartedSystemCheck m_startedSystem;
    CommandJournal *m_journal = nullptr;
    bool m_dryRun = false;
};

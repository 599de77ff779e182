#pragma once

#include "exec/AuthenticationDelegate.h"
#include "exec/Command.h"
#include "exec/PasswordPrompt.h"
#include "exec/SystemLog.h"

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <atomic>

class CommandJournal;

// Holds the administrator's grant for the whole process and runs tools as root with it.
// Backed by sudo: its cached timestamp is the grant, `sudo -n -v` asks whether it is
// still held without a prompt, our own dialog feeds the user's own password (the one sudo
// checks) to `sudo -S -p '' -v` on standard input (it never reaches a command line, a
// file or a log), and every run is `sudo -n -- TOOL ARGS`. When we already are root, or
// work on a sandbox root, the grant is always held and root runs are plain runs.
//
// The grant lasts as long as sudo keeps it; nothing drops it when the program ends,
// because `sudo -k` would also drop the ticket the user's own terminal holds.
class AdminAuthentication {
public:
    struct Config {
        QString sudo;            // absolute path (SudoLocator); "" when there is none
        bool direct = false;     // run tools directly: euid 0 or a sandbox
        QStringList environment; // extra environment of root runs
    };

    AdminAuthentication(Config config, PasswordPrompt *prompt, SystemLog *log);

    static AdminAuthentication &sharedInstance();
    // Main sets the shared instance up once, before any task runs.
    static void configureShared(Config config, PasswordPrompt *prompt);

    bool isAuthenticated(const QString &value);
    bool fetchPassword(const QString &value);
    bool authenticate(const QString &value);
    void deauthenticate();

    bool executeCommand(const QString &tool, const QStringList &args);
    bool executeCommandSynced(const QString &tool, const QStringList &args);
    // The synced launch with what became of the tool: exit status and standard error.
    CommandResult runSynced(const QString &tool, const QStringList &args);

    AuthenticationDelegate *delegate() const { return m_delegate; }
    void setDelegate(AuthenticationDelegate *delegate) { m_delegate = delegate; }

    void setPasswordPrompt(PasswordPrompt *prompt) { m_prompt = prompt; }
    // Every synced root launch is recorded there (none when null).
    void setJournal(CommandJournal *journal) { m_journal = journal; }
    bool runsDirectly() const { return m_config.direct; }

    // The root-task pattern every task runs before its work: ask, ask again after the
    // dialog; false means the task ends silently.
    bool authorizeRootTask();

    static constexpr int maxArguments = 19;
    static constexpr int chunkSize = 1024;
    static QString sudoNotFoundMessage();

private:
    enum class Launch { Detached, Synced };
    CommandResult launch(const QString &tool, const QStringList &args, Launch mode);
    void journal(const Command &command, const CommandResult &result, const QDateTime &started,
                 qint64 ms);
    struct SudoAnswer {
        int status = -1; // -1: sudo could not run
        QString text;    // its standard error
    };
    SudoAnswer sudo(const QStringList &args, const QByteArray &input = {});
    bool askForPassword(const QString &value);
    PasswordPrompt::Verdict checkPassword(const QString &password, QString &refusal);

    Config m_config;
    PasswordPrompt *m_prompt;
    SystemLog *m_log;
    AuthenticationDelegate *m_delegate = nullptr;
    CommandJournal *m_journal = nullptr;
    // The "session": made by the first query, dropped by deauthenticate.
    std::atomic<bool> m_session{false};
};

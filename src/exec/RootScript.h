#pragma once

#include <QString>
#include <optional>

class AdminAuthentication;

// Runs one root command line whose standard error decides success (loading and
// unloading a kext): the line goes into a throw-away script in the home folder with
// its standard error sent to a log beside it, the script runs through the privileged
// session, and the log's text is the answer.
//
// The two names are fixed per user, so runs are serialized across threads and processes by
// a lock file in the user's configuration folder. Root's shell opens the log by name, so it
// is created afresh by us before each run (never through a link), and a script or log
// name that is a symbolic link refuses the run: root would otherwise write where the link
// points.
class RootScript {
public:
    // lockPath "": the user's own (defaultLockPath()).
    RootScript(AdminAuthentication &session, const QString &home, const QString &lockPath = {});

    static QString defaultLockPath();

    QString scriptPath() const { return m_home + QStringLiteral("/qz_scr.sh"); }
    QString logPath() const { return m_home + QStringLiteral("/qz_log.txt"); }

    // command + " '" + argument + "' 2> " + log path. The argument is one shell word:
    // an apostrophe in it is written as '\'' so it cannot end the quoting; without one
    // the line is exactly the five pieces. The log path is quoted only when it needs it.
    QString scriptLine(const QString &command, const QString &argument) const;

    // The log's text; absent when authorization was refused (the script is then left
    // behind for the next command to overwrite) or the log can't be read. A run refused
    // before it starts (a link, no lock) answers with the reason, like a failed command.
    std::optional<QString> run(const QString &command, const QString &argument);

    static constexpr qint64 maxLogSize = 1 << 20;

private:
    std::optional<QString> runLocked(const QString &command, const QString &argument);
    AdminAuthentication &m_session;
    QString m_home;
    QString m_lockPath;
};

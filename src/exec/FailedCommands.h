#pragma once

#include "exec/Command.h"

#include <QStringList>

// The commands of one task that did not succeed, kept so the task can name them at its
// end beside its usual closing text.
class FailedCommands {
public:
    // Keeps the command when its result is a failure; gives the result back.
    CommandResult note(const Command &command, const CommandResult &result);

    bool isEmpty() const { return m_lines.isEmpty(); }
    qsizetype count() const { return m_lines.size(); }
    // One line per failed command: the command, how it ended and its standard error.
    QStringList lines() const { return m_lines; }

    // The status line of a task that had failures: "2 commands failed, see the Log".
    static QString summary(qsizetype count);
    // "cp -R a b: exit 1: cp: cannot stat 'a': No such file or directory"
    static QString describe(const Command &command, const CommandResult &result);

private:
    QStringList m_lines;
};

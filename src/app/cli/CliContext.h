#pragma once

#include "volumes/SystemPaths.h"

#include <QStringList>
#include <QTextStream>

class Executor;

// What a command-line verb gets: the words after the verb, the global options, and
// the two output streams.
struct CliContext {
    QStringList args;
    SystemPaths paths;
    bool dryRun = false;
    QTextStream &out;
    QTextStream &err;
    // Runs root sequences: the privileged session, or printing under --dry-run.
    Executor &executor;
    // Asks a yes/no question on the terminal (false when standard input is closed).
    bool confirm(const QString &question) const;
    // A line on standard output that is not a command: under --dry-run it is written as
    // a shell comment, so the whole output can be pasted into a terminal.
    void note(const QString &line) const;
    // The commands of a task that failed, on standard error below one line naming the
    // verb and their number.
    void tellFailures(const QString &verb, const QStringList &failures) const;
};

// Exit statuses of the verbs.
enum CliStatus { CliOk = 0, CliTaskError = 1, CliUsage = 2 };

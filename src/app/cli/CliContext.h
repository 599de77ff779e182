#pragma once

#include "exec/AppServices.h"
#include "exec/TaskResult.h"

#include <QStringList>
#include <QTextStream>

// What a command-line verb gets: the words after the verb, the program's services (whose
// executors print instead of running under --dry-run), and the two output streams.
struct CliContext {
    QStringList args;
    AppServices &services;
    bool dryRun = false;
    QTextStream &out;
    QTextStream &err;

    const SystemPaths &paths() const { return services.paths(); }
    // Asks a yes/no question on the terminal (false when standard input is closed).
    bool confirm(const QString &question) const;
    // A line on standard output that is not a command: under --dry-run it is written as
    // a shell comment, so the whole output can be pasted into a terminal.
    void note(const QString &line) const;
    // The commands of a task that failed, on standard error below one line naming the
    // verb and their number.
    void tellFailures(const QString &verb, const QStringList &failures) const;
    // A task's end on the terminal: its message on standard output or standard error, or
    // instead a quiet failure after "kextkeeper VERB: "; the exit status.
    int end(const QString &verb, const TaskResult &result) const;
};

// Exit statuses of the verbs.
enum CliStatus { CliOk = 0, CliTaskError = 1, CliUsage = 2 };

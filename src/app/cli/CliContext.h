#pragma once

#include "exec/AppServices.h"
#include "exec/TaskResult.h"

#include <QJsonObject>
#include <QStringList>
#include <QTextStream>
#include <optional>

class CliArgs;

// What a command-line verb gets: the words after the verb, the program's services (whose
// executors print instead of running under --dry-run), and the two output streams.
struct CliContext {
    QStringList args;
    AppServices &services;
    bool dryRun = false;
    QTextStream &out;
    QTextStream &err;

    // The verb's name, for the "kextkeeper VERB: " that starts its error lines.
    QString verb = {};

    const SystemPaths &paths() const { return services.paths(); }
    // Asks a yes/no question on the terminal (no when standard input is closed). A no
    // ends the question's line and says that nothing was changed; the verb then ends
    // with CliTaskError.
    bool confirm(const QString &question) const;
    // "kextkeeper VERB: PROBLEM" and the hint at the verb's help, on standard error.
    int usageError(const QString &problem) const;
    // For a verb that takes options only: the usage error its arguments earn (options it
    // does not know, or words besides them), nothing when they are fine.
    std::optional<int> refuseUnlessOptionsOnly(const CliArgs &args) const;
    // "kextkeeper VERB: MESSAGE" on standard error (a multi-line message as it is).
    int taskError(const QString &message) const;
    // One JSON document on standard output, for --json.
    void printJson(const QJsonObject &document) const;
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

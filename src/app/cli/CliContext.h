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
};

// Exit statuses of the verbs.
enum CliStatus { CliOk = 0, CliTaskError = 1, CliUsage = 2 };

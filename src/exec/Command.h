#pragma once

#include <QString>
#include <QStringList>

// One tool invocation as a value: plans produce lists of these, tests compare them, and
// --dry-run prints them. The tool is an absolute path (already placed below the system
// root when running on a sandbox).
struct Command {
    QString tool;
    QStringList args;
    bool asRoot = true;

    bool operator==(const Command &other) const = default;

    // A line that can be pasted into a POSIX shell and runs exactly this command.
    QString toShellLine() const;
};

// What became of one command: whether it started, its exit status and what it wrote to
// standard error. Root sequences never change course on it (a failed step does not stop
// the next); it is how a task learns that a step failed, so it can say so at its end.
struct CommandResult {
    bool launched = true;
    int exitStatus = 0; // -1: killed by a signal, or not known
    QString errorText;
    bool ok() const { return launched && exitStatus == 0; }
    // "exit 0", "exit 1", "killed", "not started".
    QString statusText() const;
};

// Quotes one word for a POSIX shell; words made only of safe characters stay bare unless
// `always` is set. An apostrophe in the word is written as '\'' so it can't end the quoting.
QString shellQuote(const QString &word, bool always = false);

// Debug and test output: QCOMPARE prints both sides of a failed comparison.
char *toString(const Command &command);

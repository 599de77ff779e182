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

// Quotes one word for a POSIX shell; words made only of safe characters stay bare.
QString shellQuote(const QString &word);

// Debug and test output: QCOMPARE prints both sides of a failed comparison.
char *toString(const Command &command);

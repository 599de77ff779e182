#pragma once

#include "exec/Command.h"

#include <QDateTime>
#include <QJsonObject>
#include <optional>

// One line of the journal: a command that ran (as root, or as the user where it changed
// something), when, for how long, and how it ended.
struct JournalEntry {
    QDateTime time; // when it started
    Command command;
    CommandResult result;
    qint64 durationMs = 0;
    // When root ran a shell script, the script's text: the command root really ran.
    QString script;
    // Planned by a dry run, not run: shown in this run's log, never written to the file.
    bool planned = false;

    bool failed() const { return !planned && !result.ok(); }
    // "exit 0", "exit 1", "killed", "not started", "planned".
    QString statusText() const;
    // The command as one shell line, the script's text where there is one.
    QString displayLine() const;

    QJsonObject toJson() const;
    static std::optional<JournalEntry> fromJson(const QJsonObject &object);
};

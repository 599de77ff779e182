#pragma once

#include <QMetaType>
#include <QString>
#include <QStringList>

// How a task ended, the one shape every task gives back: the window turns it into its
// closing alert, a verb into its streams and exit status.
struct TaskResult {
    bool ok = true;
    // The closing alert's text. Empty: the task ends without a word (a refused password,
    // a declined question, a test load that worked).
    QString message;
    // A failure the closing text keeps quiet about, where the window's texts stay what
    // they always were (the report says "Saved." even when the file could not be
    // written): the verbs print it and exit 1.
    QString quietFailure;
    // Commands of the task that failed, one line each; the closing text stays the task's
    // own, and the alert lists them beside it.
    QStringList commandFailures;

    static TaskResult done(const QString &message = {}) { return {true, message, {}, {}}; }
    static TaskResult failed(const QString &message = {}) { return {false, message, {}, {}}; }

    bool operator==(const TaskResult &other) const = default;
};

Q_DECLARE_METATYPE(TaskResult)

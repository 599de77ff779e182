#pragma once

#include "exec/JournalEntry.h"

#include <QList>
#include <QMutex>
#include <QString>
#include <functional>

// The journal of every command KextKeeper ran as root (and every command of the user's
// that changed something): one JSON object per line, appended to a file in the user's
// state folder, so a failure can be looked up long after its alert was closed. This
// run's entries are also kept in memory for the Log window. Thread-safe: tasks record
// from their own threads.
class CommandJournal {
public:
    // Without a path, entries are only kept in memory.
    explicit CommandJournal(QString path = {});

    // $XDG_STATE_HOME/kextkeeper/journal.jsonl (~/.local/state/... without it); on macOS
    // ~/Library/Logs/KextKeeper/journal.jsonl.
    static QString defaultPath(const QString &home);

    QString path() const { return m_path; }

    // Appends one entry (a planned one stays in memory only) and tells the listener.
    void record(const JournalEntry &entry);
    // A command a dry run would have run: listed with this run's entries, never written.
    void recordPlanned(const Command &command);
    // This run's entries, oldest first.
    QList<JournalEntry> entries() const;
    // Called after each record, on the recording thread.
    void setListener(std::function<void(const JournalEntry &)> listener);

    // Every readable entry of a journal file, oldest first; lines that are not entries
    // (a line cut short by a full disk) are passed over.
    static QList<JournalEntry> readFile(const QString &path);

    // A file past this size is moved aside to "journal.jsonl.1" before the next entry.
    static constexpr qint64 rotateSize = 4 * 1024 * 1024;

private:
    void append(const QByteArray &line) const;

    QString m_path;
    mutable QMutex m_mutex;
    QList<JournalEntry> m_entries;
    std::function<void(const JournalEntry &)> m_listener;
};

#pragma once

#include "exec/JournalEntry.h"

#include <QAbstractTableModel>
#include <QList>

class CommandJournal;

// This run's journal entries as a table for the Log window: time, result, duration and
// the command, failures marked. Entries recorded on a task's thread arrive on the UI
// thread, in order.
class JournalModel final : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { TimeColumn, ResultColumn, DurationColumn, CommandColumn, ColumnCount };

    explicit JournalModel(QObject *parent = nullptr);
    // Shows the journal's entries so far, then each new one.
    void follow(CommandJournal &journal);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

    const JournalEntry &entry(int row) const { return m_entries.at(row); }
    int failures() const;

signals:
    void entryAdded(const JournalEntry &entry);

private:
    void append(const JournalEntry &entry);
    QList<JournalEntry> m_entries;
};

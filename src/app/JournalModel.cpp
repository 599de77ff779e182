#include "JournalModel.h"

#include "exec/CommandJournal.h"

#include <QBrush>
#include <QPalette>
#include <QPointer>

JournalModel::JournalModel(QObject *parent) : QAbstractTableModel(parent) {}

void JournalModel::follow(CommandJournal &journal) {
    beginResetModel();
    m_entries = journal.entries();
    endResetModel();
    QPointer<JournalModel> self(this);
    journal.setListener([self](const JournalEntry &entry) {
        QMetaObject::invokeMethod(
            self.data(),
            [self, entry] {
                if (self)
                    self->append(entry);
            },
            Qt::QueuedConnection);
    });
}

void JournalModel::append(const JournalEntry &entry) {
    const int row = int(m_entries.size());
    beginInsertRows({}, row, row);
    m_entries << entry;
    endInsertRows();
    emit entryAdded(entry);
}

int JournalModel::rowCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : int(m_entries.size());
}

int JournalModel::columnCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

int JournalModel::failures() const {
    return int(std::count_if(m_entries.begin(), m_entries.end(),
                             [](const JournalEntry &entry) { return entry.failed(); }));
}

QVariant JournalModel::data(const QModelIndex &index, int role) const {
    if (!index.isValid() || index.row() >= m_entries.size())
        return {};
    const JournalEntry &entry = m_entries.at(index.row());
    if (role == Qt::ForegroundRole && entry.failed())
        return QBrush(Qt::red);
    if (role == Qt::ToolTipRole)
        return entry.result.errorText.trimmed();
    if (role != Qt::DisplayRole)
        return {};
    switch (index.column()) {
    case TimeColumn:
        return entry.time.toLocalTime().toString(QStringLiteral("HH:mm:ss"));
    case ResultColumn:
        return entry.failed() ? tr("failed: %1").arg(entry.statusText()) : entry.statusText();
    case DurationColumn:
        return entry.planned ? QString()
                             : QStringLiteral("%1 s").arg(entry.durationMs / 1000.0, 0, 'f', 2);
    case CommandColumn:
        return entry.displayLine();
    default:
        return {};
    }
}

QVariant JournalModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case TimeColumn:
        return tr("Time");
    case ResultColumn:
        return tr("Result");
    case DurationColumn:
        return tr("Took");
    case CommandColumn:
        return tr("Command");
    default:
        return {};
    }
}

#include "install/InstallList.h"

#include <QMimeData>
#include <QSet>
#include <QUrl>

namespace {
// Entries that are to leave a list are overwritten with this marker first and then
// removed together, so indexes stay valid while the list is walked.
const QString removalMarker = QStringLiteral("to_remove");

QString pathExtension(const QString &path) {
    const QString name = InstallList::bundleName(path);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    // A name that is nothing but an extension (".kext") has none.
    return dot > 0 ? name.mid(dot + 1) : QString();
}

QStringList localFiles(const QMimeData *data) {
    QStringList paths;
    for (const QUrl &url : data->urls()) {
        if (url.isLocalFile())
            paths << url.toLocalFile();
    }
    return paths;
}
} // namespace

const QStringList &InstallList::bundleTypes() {
    static const QStringList types{QStringLiteral("kext"), QStringLiteral("bundle"),
                                   QStringLiteral("plugin"), QStringLiteral("ppp")};
    return types;
}

bool InstallList::isBundlePath(const QString &path) {
    return bundleTypes().contains(pathExtension(path), Qt::CaseSensitive);
}

QString InstallList::bundleName(const QString &path) {
    QString trimmed = path;
    while (trimmed.size() > 1 && trimmed.endsWith(QLatin1Char('/')))
        trimmed.chop(1);
    return trimmed.mid(trimmed.lastIndexOf(QLatin1Char('/')) + 1);
}

QStringList InstallList::dropFilter(const QStringList &paths) {
    QStringList kept = paths;
    for (QString &path : kept) {
        if (!isBundlePath(path))
            path = removalMarker;
    }
    kept.removeAll(removalMarker);
    return kept;
}

InstallList::InstallList(QObject *parent) : QAbstractListModel(parent) {}

void InstallList::append(const QStringList &paths) {
    if (paths.isEmpty())
        return;
    beginInsertRows({}, int(m_entries.size()), int(m_entries.size() + paths.size() - 1));
    m_entries += paths;
    endInsertRows();
}

bool InstallList::acceptDrop(const QStringList &paths) {
    if (busy())
        return false;
    append(dropFilter(paths));
    return true;
}

void InstallList::clear(const QList<int> &selectedRows) {
    beginResetModel();
    if (selectedRows.isEmpty()) {
        m_entries.clear();
    } else {
        const QSet<int> selected(selectedRows.begin(), selectedRows.end());
        for (int i = 0; i < m_entries.size(); ++i) {
            if (selected.contains(i))
                m_entries[i] = removalMarker;
        }
        // An entry that is the marker text itself goes too; a path never is one.
        m_entries.removeAll(removalMarker);
    }
    endResetModel();
}

int InstallList::rowCount(const QModelIndex &parent) const {
    return parent.isValid() ? 0 : int(m_entries.size());
}

QVariant InstallList::data(const QModelIndex &index, int role) const {
    if (!index.isValid() || index.row() >= m_entries.size())
        return {};
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole)
        return m_entries.at(index.row());
    return {};
}

Qt::ItemFlags InstallList::flags(const QModelIndex &index) const {
    // Rows can be selected but never dragged out. A drop onto a row is taken like one
    // onto the list: it appends at the end.
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    return Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemIsDropEnabled;
}

QStringList InstallList::mimeTypes() const {
    return {QStringLiteral("text/uri-list")};
}

Qt::DropActions InstallList::supportedDropActions() const {
    return Qt::CopyAction;
}

Qt::DropActions InstallList::supportedDragActions() const {
    return Qt::IgnoreAction;
}

QMimeData *InstallList::mimeData(const QModelIndexList &) const {
    // A drag that starts anyway carries nothing.
    return new QMimeData;
}

bool InstallList::canDropMimeData(const QMimeData *data, Qt::DropAction, int, int,
                                  const QModelIndex &) const {
    // Whatever the source proposes, a drop here only ever copies a list of file names.
    return !busy() && data && data->hasUrls();
}

bool InstallList::dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                               const QModelIndex &parent) {
    if (!canDropMimeData(data, action, row, column, parent))
        return false;
    return acceptDrop(localFiles(data));
}

#pragma once

#include <QAbstractListModel>
#include <QList>
#include <QStringList>
#include <functional>

// The bundles chosen for installation, in the order they were added. Each entry is the
// absolute path exactly as the file panel or the drop delivered it; nothing checks that
// it exists and duplicates are kept on purpose (the same bundle is then installed
// twice). The table shows every entry as its full path.
class InstallList : public QAbstractListModel {
    Q_OBJECT
public:
    // The bundle types the list takes, in the order the file panel offers them.
    static const QStringList &bundleTypes();
    // Whether a dropped path has one of those extensions, compared case-sensitively.
    static bool isBundlePath(const QString &path);
    // The bundle's folder name: the last path component, trailing slashes ignored.
    static QString bundleName(const QString &path);
    // Keeps the paths a drop may add, in their order.
    static QStringList dropFilter(const QStringList &paths);

    explicit InstallList(QObject *parent = nullptr);

    // While an installation runs drops are refused; the flag is read at each drop.
    void setBusyCheck(std::function<bool()> busy) { m_busy = std::move(busy); }
    bool busy() const { return m_busy && m_busy(); }

    const QStringList &entries() const { return m_entries; }
    void append(const QStringList &paths);
    // A drop of file paths: refused while busy, otherwise the bundles among them are
    // appended at the end whatever row the drop pointed at. True unless refused, even
    // when no bundle was among the files.
    bool acceptDrop(const QStringList &paths);
    // Removes the given rows, or every entry when no row is given.
    void clear(const QList<int> &selectedRows = {});

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

    // Drops from the file manager arrive as a list of file URLs.
    QStringList mimeTypes() const override;
    Qt::DropActions supportedDropActions() const override;
    Qt::DropActions supportedDragActions() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    bool canDropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                         const QModelIndex &parent) const override;
    bool dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                      const QModelIndex &parent) override;

private:
    QStringList m_entries;
    std::function<bool()> m_busy;
};

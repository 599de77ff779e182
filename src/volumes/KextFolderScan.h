#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <set>
#include <utility>

// One pass of the kext location index over a folder: every entry in the listing's own
// order, each followed at once by the entries of its plug-in folders. A scan of a few
// thousand bundles costs what it asks the file system, so it asks once where it can: the
// listing tells which entries are folders (only a folder can hold an information file or
// plug-ins), the information file is opened without testing first whether it exists, and
// it is read through libplist's C tree for its one key.
class KextFolderScan {
public:
    KextFolderScan(QStringList &paths, QStringList &identifiers);

    void scan(const QString &folder);

    // The bundle identifier of a bundle folder ("" when it has none); `bundle` is the
    // file system's spelling of its path.
    static QString identifier(const QByteArray &bundle);

    // Information files larger than this are not read.
    static constexpr qint64 MaxInfoPlistSize = qint64(16) << 20;

private:
    void scan(const QString &folder, const QByteArray &native);

    QStringList &m_paths;
    QStringList &m_identifiers;
    // Folders being scanned (device, inode): a plug-in folder linked back to one of them
    // would otherwise recurse forever.
    std::set<std::pair<quint64, quint64>> m_open;
};

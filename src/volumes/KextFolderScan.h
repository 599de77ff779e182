#pragma once

#include "plist/PlistPtr.h"
#include <QByteArray>
#include <QString>
#include <QStringList>
#include <functional>
#include <plist/plist.h>
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

    // A folder entry as the scan met it, for a caller that reads more of a bundle than its
    // identifier: so each information file is read only once.
    struct Bundle {
        QString path;
        QString container; // the bundle whose plug-in folder holds this one, or ""
        QString infoFile;  // the information file found; "" when there is none
        plist_t info;      // its dictionary, owned by the scan; nullptr when unreadable
    };
    // Which plug-in folders are followed: the index's own spelling (above), or the one
    // the kernel's loader uses, "Contents/PlugIns" (and "PlugIns" in a bundle without
    // Contents), which finds plug-ins on case-sensitive volumes too.
    enum class PlugIns { Index, Loader };
    void setVisitor(std::function<void(const Bundle &)> visitor, PlugIns spelling);

    void scan(const QString &folder);

    // The bundle identifier of a bundle folder ("" when it has none); `bundle` is the
    // file system's spelling of its path.
    static QString identifier(const QByteArray &bundle);

    // Information files larger than this are not read.
    static constexpr qint64 MaxInfoPlistSize = qint64(16) << 20;

private:
    struct InfoFile {
        QByteArray path; // empty when the bundle has none
        PlistPtr tree;
    };
    static InfoFile readInfo(const QByteArray &bundle);
    void scan(const QString &folder, const QByteArray &native, const QString &container);
    void scanPlugIns(const QString &shown, const QByteArray &path, const QByteArray &infoFile);

    QStringList &m_paths;
    QStringList &m_identifiers;
    // Folders being scanned (device, inode): a plug-in folder linked back to one of them
    // would otherwise recurse forever.
    std::set<std::pair<quint64, quint64>> m_open;
    std::function<void(const Bundle &)> m_visitor;
    PlugIns m_plugIns = PlugIns::Index;
};

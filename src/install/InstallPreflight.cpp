#include "install/InstallPreflight.h"

#include "exec/Tr.h"
#include "install/FileTree.h"
#include "install/InstallList.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QSet>
#include <fcntl.h>
#include <unistd.h>

namespace {

QString size(qint64 bytes) {
    return QLocale::c().formattedDataSize(bytes);
}

QString nothingInstalled(const QString &why) {
    return kkTr("Nothing was installed: %1").arg(why);
}

// The room on the file system of `folder`, or the sentence saying it is too little.
std::optional<QString> tooLittleRoom(const QString &folder, qint64 bytes, const char *what) {
    const std::optional<FileTree::Room> room = FileTree::room(folder);
    if (!room)
        return std::nullopt; // nothing to judge by; the copies will tell
    const qint64 need = bytes + InstallPreflight::margin(bytes);
    if (room->freeBytes >= need)
        return std::nullopt;
    return nothingInstalled(kkTr("%1 has %2 free, and %3 need %4.")
                                .arg(folder, size(room->freeBytes), kkTr(what), size(need)));
}

// Whether we may make folders where `path` lies (or would lie).
bool canCreateBelow(const QString &path) {
    QString existing = QDir::cleanPath(path);
    while (!QFileInfo::exists(existing) && existing != QLatin1String("/"))
        existing = QFileInfo(existing).path();
    return QFileInfo(existing).isDir() &&
           ::faccessat(AT_FDCWD, QFile::encodeName(existing).constData(), W_OK | X_OK,
                       AT_EACCESS) == 0;
}

} // namespace

std::optional<QString> InstallPreflight::checkBundles(const QStringList &bundles) {
    for (const QString &bundle : bundles) {
        const QFileInfo info(bundle);
        if (!info.exists())
            return nothingInstalled(kkTr("%1 is no longer at %2 (it was moved or deleted after "
                                         "it was added).")
                                        .arg(InstallList::bundleName(bundle), info.path()));
        if (const std::optional<QString> entry = FileTree::unreadableEntry(bundle))
            return nothingInstalled(
                kkTr("%1 cannot be read whole: %2 is not readable.").arg(bundle, *entry));
    }
    return std::nullopt;
}

std::optional<QString> InstallPreflight::checkInstall(const QStringList &bundles,
                                                      const QString &folder,
                                                      const QString &backupsFolder) {
    if (std::optional<QString> problem = checkBundles(bundles))
        return problem;
    const qint64 block = FileTree::room(folder).value_or(FileTree::Room{}).blockSize;
    qint64 added = 0;
    qint64 replaced = 0;
    qint64 backedUp = 0;
    QHash<QString, QString> listedEarlier; // name -> the bundle installed under it
    for (const QString &bundle : bundles) {
        const QString name = InstallList::bundleName(bundle);
        const QString installed = folder + QLatin1Char('/') + name;
        // The copy that will be replaced: one of ours from earlier in the list, or the
        // one in the folder now.
        QString current = listedEarlier.value(name);
        if (current.isEmpty() && QFileInfo::exists(installed)) {
            current = installed;
            replaced += FileTree::diskBytes(installed, block);
            if (!backupsFolder.isEmpty()) {
                if (const std::optional<QString> entry = FileTree::unreadableEntry(installed))
                    return nothingInstalled(
                        kkTr("%1 cannot be backed up: %2 is not readable.").arg(installed, *entry));
            }
        }
        if (!current.isEmpty() && !backupsFolder.isEmpty())
            backedUp += FileTree::diskBytes(current, block);
        listedEarlier.insert(name, bundle);
        added += FileTree::diskBytes(bundle, block);
    }
    if (backedUp > 0) {
        if (!canCreateBelow(backupsFolder))
            return nothingInstalled(
                kkTr("the backup folder %1 cannot be created.").arg(backupsFolder));
        if (std::optional<QString> problem = tooLittleRoom(backupsFolder, backedUp, "the backups"))
            return problem;
    }
    // The old copies go before the new ones come, so only the growth needs room.
    return tooLittleRoom(folder, qMax<qint64>(0, added - replaced), "the new kexts");
}

InstallPreflight::StagingCheck InstallPreflight::checkPacking(const QStringList &bundles,
                                                              const QString &staging) {
    if (std::optional<QString> problem = checkBundles(bundles))
        return {Staging::Absent, *problem};
    StagingCheck result;
    const QFileInfo info(staging);
    if (info.isSymLink())
        return {Staging::Absent,
                nothingInstalled(kkTr("%1 is a link; kexts are not packed through it. Remove "
                                      "it and try again.")
                                     .arg(staging))};
    if (info.exists()) {
        if (!info.isDir() || !QFileInfo::exists(staging + QLatin1Char('/') + stagingMark()))
            return {Staging::Absent,
                    nothingInstalled(kkTr("%1 is in the way: kexts are packed there, and "
                                          "KextKeeper did not make it. Move it away and try "
                                          "again.")
                                         .arg(staging))};
        result.staging = Staging::Stale;
    } else if (!canCreateBelow(staging)) {
        return {Staging::Absent, nothingInstalled(kkTr("%1 cannot be created.").arg(staging))};
    }
    qint64 bytes = 0;
    for (const QString &bundle : bundles)
        bytes += FileTree::diskBytes(bundle, 4096);
    // The staged copies and the archive made of them lie side by side for a while.
    if (std::optional<QString> problem =
            tooLittleRoom(QFileInfo(staging).path(), 2 * bytes, "the kexts and their archive"))
        result.problem = *problem;
    return result;
}

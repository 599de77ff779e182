#include "install/KextBackup.h"

#include "install/FileTree.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <filesystem>
#include <system_error>

namespace {
std::filesystem::path fsPath(const QString &path) {
    return std::filesystem::path(QFile::encodeName(path).toStdString());
}
bool present(const QString &path) {
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

namespace fs = std::filesystem;

// Links stay links; a folder gets its mode only once it is filled, so a read-only
// folder is copied too, and no umask changes a mode.
bool copyEntry(const fs::path &from, const fs::path &to) {
    std::error_code error;
    const fs::file_status status = fs::symlink_status(from, error);
    if (error)
        return false;
    if (fs::is_symlink(status)) {
        fs::copy_symlink(from, to, error);
        return !error;
    }
    if (fs::is_regular_file(status)) {
        fs::copy_file(from, to, error);
        if (!error)
            fs::permissions(to, status.permissions(), error);
        return !error;
    }
    if (!fs::is_directory(status) || !fs::create_directory(to, error))
        return false;
    fs::directory_iterator it(from, error), end;
    if (error)
        return false;
    for (; it != end; it.increment(error)) {
        if (error || !copyEntry(it->path(), to / it->path().filename()))
            return false;
    }
    fs::permissions(to, status.permissions(), error);
    return !error;
}
} // namespace

QString KextBackup::folderName(const QDateTime &when) {
    return when.toString(QStringLiteral("dd-MM HH_mm_ss"));
}

KextBackup::KextBackup(const QString &desktop, const QDateTime &when, BackupManifest manifest)
    : m_backups(backupsFolder(desktop)), m_when(when), m_manifest(std::move(manifest)) {
    m_manifest.date = when;
}

QString KextBackup::runFolder() const {
    return m_backups + QLatin1Char('/') + folderName(m_when.addSecs(m_step));
}

bool KextBackup::useFolderFor(const QString &name) {
    // Another run's folder (a run in the same second, or on this day of another year)
    // is never mixed with ours, and nothing in ours is ever replaced.
    while (m_ours ? present(runFolder() + QLatin1Char('/') + name) : present(runFolder())) {
        ++m_step;
        m_ours = false;
        m_manifest.bundles.clear();
        if (m_step > 3600)
            return false;
    }
    if (!m_ours) {
        if (!QDir().mkpath(runFolder()))
            return false;
        m_ours = true;
    }
    return true;
}

KextBackup::Saved KextBackup::save(const QString &installedCopy, const QString &removedFrom) {
    const QString name = QFileInfo(installedCopy).fileName();
    if (!useFolderFor(name))
        return {{}, QStringLiteral("%1 could not be made").arg(runFolder())};
    const QString copy = runFolder() + QLatin1Char('/') + name;
    if (present(copy))
        return {{}, QStringLiteral("%1 is already there").arg(copy)};
    // A copy that is not complete is no backup: it goes, so nobody mistakes it for one.
    if (!copyTree(installedCopy, copy)) {
        QDir(copy).removeRecursively();
        return {{}, QStringLiteral("copying it to %1 failed").arg(runFolder())};
    }
    if (const std::optional<QString> difference = FileTree::difference(installedCopy, copy, true)) {
        QDir(copy).removeRecursively();
        return {{}, QStringLiteral("the copy in %1 differs: %2").arg(runFolder(), *difference)};
    }
    m_manifest.bundles << BackupManifest::Bundle{name, removedFrom};
    if (!m_manifest.write(runFolder()))
        return {{}, QStringLiteral("its note could not be written to %1").arg(runFolder())};
    return {copy, {}};
}

bool KextBackup::copyTree(const QString &from, const QString &to) {
    return !present(to) && copyEntry(fsPath(from), fsPath(to));
}

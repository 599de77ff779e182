#include "install/KextBackup.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <filesystem>
#include <system_error>

namespace {
std::filesystem::path fsPath(const QString &path) {
    return std::filesystem::path(QFile::encodeName(path).toStdString());
}
} // namespace

QString KextBackup::folderName(const QDateTime &when) {
    return when.toString(QStringLiteral("dd-MM HH_mm_ss"));
}

KextBackup::KextBackup(const QString &desktop, const QString &folderName)
    : m_backups(desktop + QStringLiteral("/Kext Backups")),
      m_run(m_backups + QLatin1Char('/') + folderName) {}

bool KextBackup::save(const QString &installedCopy, const QString &name) const {
    if (!QFileInfo::exists(m_backups))
        QDir().mkpath(m_backups);
    if (!QFileInfo::exists(m_run))
        QDir().mkpath(m_run);
    return copyTree(installedCopy, m_run + QLatin1Char('/') + name);
}

bool KextBackup::copyTree(const QString &from, const QString &to) {
    const QFileInfo target(to);
    if (target.exists() || target.isSymLink())
        return false;
    std::error_code error;
    std::filesystem::copy(fsPath(from), fsPath(to),
                          std::filesystem::copy_options::recursive |
                              std::filesystem::copy_options::copy_symlinks,
                          error);
    return !error;
}

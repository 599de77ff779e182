#include "volumes/KextLocationIndex.h"

#include "plist/PlistFile.h"
#include "volumes/KextFolderScan.h"
#include "volumes/SystemPaths.h"

#include <QDir>
#include <QFileInfo>
#include <memory>

namespace {
bool exists(const QString &path) {
    return QFileInfo::exists(path);
}

// "/a/b/X.kext" -> "/a/b"; "/X.kext" -> "/"; a bare name has no folder.
QString parentFolder(QString path) {
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    if (slash < 0)
        return QString();
    return slash == 0 ? QStringLiteral("/") : path.left(slash);
}
} // namespace

KextLocationIndex::KextLocationIndex(const QString &settingsFile) : m_settingsFile(settingsFile) {}

void KextLocationIndex::clear() {
    m_pathes.clear();
    m_idbundles.clear();
}

void KextLocationIndex::addFolder(const QString &folder) {
    KextFolderScan(m_pathes, m_idbundles).scan(folder);
}

QString KextLocationIndex::findPath(const QString &identifier) const {
    const qsizetype at = m_idbundles.indexOf(identifier);
    return at < 0 ? QString() : m_pathes.at(at);
}

unsigned KextLocationIndex::customFolderCount() {
    if (m_kextDirs.isEmpty() && !m_settingsFile.isEmpty() && exists(m_settingsFile)) {
        const PlistPtr settings = PlistFile::readDictionary(m_settingsFile);
        if (settings)
            m_kextDirs = PlistFile::stringArray(settings.get(), settingsKey().toUtf8().constData())
                             .value_or(QStringList());
    }
    return unsigned(m_kextDirs.size());
}

QString KextLocationIndex::customFolder(int index) const {
    return index >= 0 && index < m_kextDirs.size() ? m_kextDirs.at(index) : QString();
}

void KextLocationIndex::rememberFolderOf(const QString &kextPath) {
    m_kextDirs << parentFolder(kextPath);
    m_kextDirs.removeDuplicates();
    // Without a settings file (a dry run) the folder counts for this run only.
    if (m_settingsFile.isEmpty())
        return;

    // Keep whatever else the file holds; an unreadable file starts over empty.
    PlistPtr settings = PlistFile::readDictionary(m_settingsFile);
    if (!settings)
        settings.reset(plist_new_dict());
    PlistFile::putStringArray(settings.get(), settingsKey().toUtf8().constData(), m_kextDirs);
    // Our settings folder may not exist yet on a fresh system. A read-only one cannot
    // keep the list; the folder still counts for this run.
    QDir().mkpath(QFileInfo(m_settingsFile).absolutePath());
    PlistFile::writeDictionary(m_settingsFile, settings.get());
}

void KextLocationIndex::rebuild(const SystemPaths &paths) {
    clear();
    addFolder(paths.system(QStringLiteral("/System/Library/Extensions")));
    const QString extraExtensions = paths.system(QStringLiteral("/Extra/Extensions"));
    if (exists(extraExtensions))
        addFolder(extraExtensions);
    const QString kextStore = paths.system(QStringLiteral("/Extra/KextStore"));
    if (exists(kextStore))
        addFolder(kextStore);
    for (int i = 0; unsigned(i) < customFolderCount(); ++i) {
        if (exists(customFolder(i)))
            addFolder(customFolder(i));
    }
}

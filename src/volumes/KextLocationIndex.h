#pragma once

#include <QString>
#include <QStringList>

class SystemPaths;

// Finds a kext on disk from the bundle identifier the kernel reports. Two parallel lists
// (every scanned entry and its identifier, "" when it has none) are rebuilt in full before
// each use; a third list holds the folders where the user has test-loaded kexts, kept in
// CustomKextDirs.plist so they are scanned in later runs too.
class KextLocationIndex {
public:
    // An empty settings path keeps the custom folders in memory only.
    explicit KextLocationIndex(const QString &settingsFile);

    // Empties the scanned lists; the custom folders stay.
    void clear();
    // Appends every entry of the folder (plug-ins right after their kext, depth first).
    void addFolder(const QString &folder);
    // Path of the first entry with exactly this identifier; "" when none.
    QString findPath(const QString &identifier) const;
    // Number of custom folders; the saved list is loaded here, and only here, when no
    // folder is known yet.
    unsigned customFolderCount();
    // The custom folder at index; the caller stays below customFolderCount().
    QString customFolder(int index) const;
    // Remembers the folder holding the kext and saves the list at once.
    void rememberFolderOf(const QString &kextPath);

    // The full rebuild every user of the index runs first: the started system's
    // Extensions folder, the Extra folders that exist, then every custom folder that
    // still exists.
    void rebuild(const SystemPaths &paths);

    const QStringList &entries() const { return m_pathes; }
    const QStringList &identifiers() const { return m_idbundles; }
    const QStringList &customFolders() const { return m_kextDirs; }
    QString settingsFile() const { return m_settingsFile; }

    static QString settingsKey() { return QStringLiteral("Custom Kext Directories"); }

private:
    QString m_settingsFile;
    QStringList m_kextDirs;
    QStringList m_pathes;
    QStringList m_idbundles;
};

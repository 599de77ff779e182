#pragma once

#include <QHash>
#include <QString>
#include <functional>

// Names the bundles unpacked into one folder: "<Name>.kext" when that is free there,
// else "<Name>-1.kext", "<Name>-2.kext", ... It remembers per name the next number to
// try, so an archive that holds one name many times costs a look or two per kext, not
// one look per earlier twin.
class BundleNamer {
public:
    // Whether a path is in use; by default anything there, a dangling link included.
    using Taken = std::function<bool(const QString &path)>;

    explicit BundleNamer(const QString &folder, Taken taken = {});

    // The first free "<name>[-N].kext"; the caller then creates it.
    QString next(const QString &name);

    static bool takenOnDisk(const QString &path);

private:
    QString m_folder;
    Taken m_taken;
    QHash<QString, int> m_nextNumber; // 0 stands for the plain name
};

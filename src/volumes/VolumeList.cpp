#include "volumes/VolumeList.h"

#include <QDir>
#include <QFileInfo>

QStringList VolumeList::build(const QString &volumesDir) {
    const QDir dir(volumesDir);
    QStringList names = dir.entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Unsorted);
    const QString marker = QLatin1String(removalMarker);
    for (QString &name : names) {
        const QString root = volumesDir + QLatin1Char('/') + name;
        if (!QFileInfo::exists(root + QStringLiteral("/Extra")) &&
            !QFileInfo::exists(root + QStringLiteral("/System/Library")))
            name = marker;
    }
    // A volume really named like the marker goes with the markers; that is accepted.
    names.removeAll(marker);
    return names;
}

int VolumeList::preselection(const QStringList &volumes, const QString &volumesDir,
                             const std::function<bool(const QString &)> &isRoot) {
    if (volumes.size() <= 1)
        return -1;
    for (int i = 0; i < volumes.size(); ++i) {
        if (isRoot(volumesDir + QLatin1Char('/') + volumes.at(i)))
            return i;
    }
    return -1;
}

#pragma once

#include <QString>
#include <QStringList>
#include <functional>

// The volumes a task can work on: the entries of the volumes folder that hold an Extra
// folder or a System/Library folder, in the order the folder listing gives them.
class VolumeList {
public:
    // The marker that stands in for an entry while the list is being pruned.
    static constexpr const char *removalMarker = "to_remove";

    // Lists volumesDir (hidden names included, unsorted). A folder that can't be read
    // gives an empty list.
    static QStringList build(const QString &volumesDir);

    // The index to preselect: with more than one volume, the first whose root is the
    // started system; -1 when nothing is to be selected explicitly. isRoot is asked with
    // volumesDir + "/" + name and is never asked for a list of one.
    static int preselection(const QStringList &volumes, const QString &volumesDir,
                            const std::function<bool(const QString &)> &isRoot);
};

#pragma once

#include "volumes/SystemPaths.h"

#include <QIcon>
#include <QString>

// The system's image files the window shows: three toolbar items and the sheets' icons,
// named by their paths on a Mac. Where the system lacks one (any other host), the copy
// we ship under the same name stands in; with neither, there is no image at all.
class SystemImages {
public:
    explicit SystemImages(SystemPaths paths, QString shippedFolder = QStringLiteral(":/images"));

    // The image of the file at systemFile (below the system root), or of our copy of it;
    // a null icon when neither can be read.
    QIcon icon(const QString &systemFile) const;

private:
    SystemPaths m_paths;
    QString m_shipped;
};

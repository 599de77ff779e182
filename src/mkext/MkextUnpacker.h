#pragma once

#include "mkext/MkextArchive.h"

#include <QString>

// Writes each kext of an archive as <Name>.kext (Contents/Info.plist and, when it has
// one, Contents/MacOS/<executable>) directly inside a folder. A name already taken gets
// -1, -2, ... Names come from the archive, so each is cut to a single path component:
// nothing is ever written outside the folder, and nothing that exists is overwritten.
class MkextUnpacker {
public:
    // The error line (without line feed), or an empty string when every kext was written.
    static QString unpack(const MkextArchive &archive, const QString &folder);
};

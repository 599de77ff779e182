#pragma once

#include "sandbox/SandboxKext.h"

#include <QList>

// The made-up kexts a fresh sandbox holds, on every volume, with the ones its kernel has
// loaded marked. Families come before the drivers that link against them, so the loaded
// list can be built in catalogue order.
class SandboxCatalog {
public:
    static const QList<SandboxKext> &kexts();
    // The started system's volume name and the other volumes below Volumes/.
    static QString startedVolume() { return QStringLiteral("Macintosh HD"); }
    static QString lionVolume() { return QStringLiteral("Lion Backup"); }
    static QString dataVolume() { return QStringLiteral("Data"); }
};

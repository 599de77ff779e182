#pragma once

#include <QString>
#include <Qt>

// What the maintenance page says when its button is pressed, read on the UI thread so
// the job never touches a widget. The boxes keep their three states: the input check
// accepts a box in the mixed state, the job only runs a box that is fully on.
struct MaintenanceOptions {
    QString volume;                                   // title of the target volume
    QString extraVersion;                             // "10.4" .. "10.7", or empty for Extra itself
    Qt::CheckState repairExtra = Qt::Unchecked;       // Extensions and KextStore owners/modes
    Qt::CheckState rebuildExtraMkext = Qt::Unchecked; // Extra/Extensions.mkext
    Qt::CheckState repairSle = Qt::Unchecked;         // S/L/E, then the disk's permissions
    Qt::CheckState rebuildCaches = Qt::Unchecked;     // the system's kext caches
    bool prelinkKernel = false;                       // the "Prelink Kernel" menu mark
    bool recreateLionCache = false; // "Manually recreate Lion cache" in the settings
};

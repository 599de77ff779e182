#pragma once

#include "doctor/BundleWalk.h"
#include "doctor/DoctorScan.h"

// Reads a volume for the doctor: scans S/L/E, Extra's (or the version folder's) Extensions
// and KextStore the way the kext location index does, with the loader's plug-in folders,
// and for each kext keeps its Info.plist's keys, its files' owners, modes and links, and
// the processors of its executable, all read in-process.
class DoctorInventory {
public:
    static DoctorScan take(const QString &volumeRoot, const QString &extraVersion,
                           const BundleWalk::OwnerLookup &owner);

    // "10.6.8" from the volume's SystemVersion.plist; "" when it can't be read.
    static QString productVersion(const QString &volumeRoot);
};

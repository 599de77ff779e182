#pragma once

#include "doctor/BundleWalk.h"
#include "doctor/DoctorFinding.h"

#include <QString>

// Finds why a volume's kexts will not load, or will keep a system from booting, without
// running anything: every check reads files in-process, so it works the same on a Mac, on
// a Mac volume mounted elsewhere and on a sandbox.
class KextDoctor {
public:
    struct Options {
        QString volumeRoot;            // "…/Volumes/NAME", no trailing slash
        QString extraVersion;          // "" or "10.4" .. "10.7": the Extra folder to look in
        BundleWalk::OwnerLookup owner; // empty: the owners lstat gives
    };

    struct Result {
        DoctorFindings findings; // grouped by kext in scan order, then by check
        int kexts = 0;
        QString systemVersion;
        int count(DoctorFinding::Severity severity) const;
    };

    static Result run(const Options &options);
};

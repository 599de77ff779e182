#pragma once

#include "doctor/DoctorFinding.h"
#include "doctor/DoctorScan.h"

// The archives built from the kext folders: the Extra mkext (D10) and the system's kext
// caches (D11). A loader takes an archive instead of its folder only when the archive's
// time is the folder's plus one second; the tools that build them set that time.
class ArchiveChecks {
public:
    static void run(const DoctorScan &scan, DoctorFindings &findings);

    // The caches below a volume root that the system builds from S/L/E (and the kernel).
    static QStringList systemCaches();
    // The kernels whose time a kernel cache also follows.
    static QStringList kernels();
};

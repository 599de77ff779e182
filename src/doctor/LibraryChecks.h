#pragma once

#include "doctor/DoctorFinding.h"
#include "doctor/DoctorScan.h"

// The checks between kexts: every library a kext declares must be on the volume in a
// compatible version (D7), and what the boot loader loads from Extra, with the S/L/E kexts
// those need, must say OSBundleRequired (D8).
class LibraryChecks {
public:
    static void run(const DoctorScan &scan, DoctorFindings &findings);

    // The copy of `identifier` that serves a request for `version`: its position in the
    // scan's kexts, -1 when the system itself provides it (the kernel's interfaces), or
    // absent when no copy is compatible.
    static std::optional<int> provider(const DoctorScan &scan, const QString &identifier,
                                       const QString &version);
};

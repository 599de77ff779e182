#pragma once

#include "doctor/DoctorFinding.h"
#include "doctor/DoctorScan.h"

// The checks that need one kext alone: owners (D1), modes (D2), links (D3), the Info.plist
// (D4), its keys (D5), the processors of the executable (D6) and the 64-bit rule for the
// kernel's old libraries (D12).
class BundleChecks {
public:
    static void run(const DoctorScan &scan, const DoctorKext &kext, DoctorFindings &findings);
};

#pragma once

#include "doctor/DoctorFinding.h"
#include "doctor/DoctorScan.h"

// D9: one bundle identifier in two places. The kernel keeps the first copy it gets and
// refuses the second, and the boot loader hands over Extra's before the system's: an
// Extra copy that is not newer than the S/L/E one, or two copies in one folder, leave the
// wrong one loaded. Each copy but the winner (the newest; on a tie the system's, then the
// first scanned) is reported, to be moved to the backups.
class DuplicateCheck {
public:
    static void run(const DoctorScan &scan, DoctorFindings &findings);
};

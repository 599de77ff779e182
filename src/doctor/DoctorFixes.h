#pragma once

#include "doctor/DoctorFinding.h"
#include "maintenance/MaintenanceOptions.h"

#include <QStringList>

// Which tasks repair a list of findings: the maintenance page's options to tick, and the
// copies to move out of the way.
class DoctorFixes {
public:
    // The maintenance options for the volume with a box ticked for each task some finding
    // names; every box off when none does.
    static MaintenanceOptions maintenance(const DoctorFindings &findings, const QString &volume,
                                          const QString &extraVersion);
    static bool anyMaintenance(const MaintenanceOptions &options);
    // The tasks ticked, in the plan's order: "repair Extra permissions", ...
    static QStringList taskNames(const MaintenanceOptions &options);
    // The copies D9 wants removed, in finding order.
    static QStringList removals(const DoctorFindings &findings);
};

#include "doctor/DoctorFixes.h"

namespace {
using Fix = DoctorFinding::Fix;

// The maintenance boxes in the plan's order, with the task each stands for.
struct Task {
    Fix fix;
    Qt::CheckState MaintenanceOptions::*box;
};
const Task tasks[] = {
    {Fix::RepairExtra, &MaintenanceOptions::repairExtra},
    {Fix::RebuildExtraMkext, &MaintenanceOptions::rebuildExtraMkext},
    {Fix::RepairSle, &MaintenanceOptions::repairSle},
    {Fix::RebuildCaches, &MaintenanceOptions::rebuildCaches},
};
} // namespace

MaintenanceOptions DoctorFixes::maintenance(const DoctorFindings &findings, const QString &volume,
                                            const QString &extraVersion) {
    MaintenanceOptions options;
    options.volume = volume;
    options.extraVersion = extraVersion;
    for (const DoctorFinding &finding : findings) {
        for (const Task &task : tasks) {
            if (finding.fix == task.fix)
                options.*task.box = Qt::Checked;
        }
    }
    return options;
}

bool DoctorFixes::anyMaintenance(const MaintenanceOptions &options) {
    return !taskNames(options).isEmpty();
}

QStringList DoctorFixes::taskNames(const MaintenanceOptions &options) {
    QStringList names;
    for (const Task &task : tasks) {
        if (options.*task.box == Qt::Checked)
            names << DoctorFinding::fixText(task.fix).section(QStringLiteral(" ("), 0, 0);
    }
    return names;
}

QStringList DoctorFixes::removals(const DoctorFindings &findings) {
    QStringList paths;
    for (const DoctorFinding &finding : findings) {
        if (finding.fix == Fix::RemoveCopy && !paths.contains(finding.path))
            paths << finding.path;
    }
    return paths;
}

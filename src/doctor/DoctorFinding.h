#pragma once

#include <QList>
#include <QString>

// One thing the doctor found wrong on a volume, and which task repairs it.
struct DoctorFinding {
    enum class Severity { Warning, Error };
    // The repairs the program can start itself, plus the ones left to the user.
    enum class Fix {
        RepairExtra,       // the maintenance page's Extra permissions
        RepairSle,         // the maintenance page's S/L/E and disk permissions
        RebuildExtraMkext, // the maintenance page's Extra mkext rebuild
        RebuildCaches,     // the maintenance page's system cache rebuild
        RemoveCopy,        // move this copy to the backups, as an install replaces one
        Reinstall,         // install a good copy (or remove this one)
        EditInfoPlist,     // nothing to start: the kext's Info.plist needs a key
    };

    Severity severity = Severity::Error;
    QString id;   // "D1" .. "D12"
    QString kext; // the bundle the finding belongs to; the archive or cache for D10, D11
    QString path; // the item the text is about
    QString text;
    Fix fix = Fix::Reinstall;

    // "error", "warning"
    static QString severityName(Severity severity);
    // Short names for the command line's --json: "repair-extra", "remove-copy", ...
    static QString fixKey(Fix fix);
    // What the user reads after "fix: ".
    static QString fixText(Fix fix);
    // The maintenance page's tasks; the others are not maintenance.
    static bool isMaintenance(Fix fix);
};

using DoctorFindings = QList<DoctorFinding>;

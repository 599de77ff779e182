#pragma once

#include <QString>
#include <QStringList>

// Everything the maintenance plan shows while it runs, in the order it happens; its end
// is the TaskResult the plan returns. The window turns each effect into a queued signal,
// the command line prints, tests record.
class MaintenanceView {
public:
    virtual ~MaintenanceView() = default;

    // The job's target root ("…/Volumes/NAME/"), kept as the program's rp.
    virtual void rootPathChosen(const QString &rootPath) = 0;
    // The button, both option groups with their boxes and the volume popup, together.
    virtual void setControlsEnabled(bool enabled) = 0;
    // The busy flag the page guards read.
    virtual void setWorking(bool working) = 0;
    virtual void setSpinning(bool spinning) = 0;
    // The status line; empty once the job has ended.
    virtual void setStatus(const QString &text) = 0;
    // The option boxes follow what the volume now holds.
    virtual void reevaluateVolume() = 0;
    // Commands of the run that failed, one line each, told just before the run ends.
    virtual void commandsFailed(const QStringList &failures) = 0;
};

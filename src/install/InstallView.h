#pragma once

#include <QString>
#include <QStringList>

// Everything an installation shows while it runs, in the order it happens; its end is the
// TaskResult the plan returns. The window turns each effect into a queued signal, the
// command line prints, tests record.
class InstallView {
public:
    virtual ~InstallView() = default;

    // Progress before the job starts: the bar is full when the last bundle starts.
    virtual void progressPrepared(int maximum) = 0;
    // The job's task state: the target root it works on and this run's backup folder
    // name (empty without backups).
    virtual void taskState(const QString &rootPath, const QString &backupFolder) = 0;
    // The page's controls, all together, and the busy flag the page guards read.
    virtual void setControlsEnabled(bool enabled) = 0;
    virtual void setWorking(bool working) = 0;
    // Bundle `index` of `count` (from 0) starts.
    virtual void bundleStarted(int index, int count, const QString &path) = 0;
    // A loop is done and the folder-wide commands run: the bar only shows activity.
    virtual void setIndeterminate(bool indeterminate) = 0;
    // The option boxes follow what the volume now holds.
    virtual void reevaluateVolume() = 0;
    // Commands of the run that failed, one line each, told just before the run ends.
    virtual void commandsFailed(const QStringList &failures) = 0;
    // The bar is emptied once the run has finished.
    virtual void progressReset() = 0;
};

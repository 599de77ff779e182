#pragma once

#include "install/InstallView.h"
#include "maintenance/MaintenanceView.h"

#include <QObject>
#include <atomic>

// A plan's view as signals. The reporter lives on the UI thread and the plan calls it
// from the pool, so every slot connected to it runs on the UI thread, queued in the order
// the plan made the effects; called on the UI thread (before a job starts) it acts at once.
// The busy flag is the exception: the page guards and the drop target read it, so it is
// set the moment the plan says so.
class TaskReporter final : public QObject, public MaintenanceView, public InstallView {
    Q_OBJECT
public:
    TaskReporter(std::atomic<bool> &busy, QObject *parent);

    void rootPathChosen(const QString &path) override { emit rootPath(path); }
    void taskState(const QString &rootPath, const QString &backupFolder) override {
        emit taskStateChanged(rootPath, backupFolder);
    }
    void setControlsEnabled(bool enabled) override { emit busy(!enabled); }
    void setWorking(bool working) override {
        m_busy = working;
        emit workingChanged(working);
    }
    void setSpinning(bool spinning) override { emit spinner(spinning); }
    void setStatus(const QString &text) override { emit status(text); }
    void reevaluateVolume() override { emit volumeChanged(); }
    void progressPrepared(int maximum) override { emit progressMaximum(maximum); }
    void bundleStarted(int index, int, const QString &) override { emit bundle(index); }
    void setIndeterminate(bool indeterminate) override {
        emit progressIndeterminate(indeterminate);
    }
    void progressReset() override { emit progressEmptied(); }
    void commandsFailed(const QStringList &failures) override { emit commandFailures(failures); }

signals:
    // After the busy flag changed; the flag itself is set at once.
    void workingChanged(bool working);
    void rootPath(const QString &rootPath);
    void taskStateChanged(const QString &rootPath, const QString &backupFolder);
    void busy(bool busy);
    void spinner(bool spinning);
    void status(const QString &text);
    void volumeChanged();
    void progressMaximum(int maximum);
    void bundle(int index);
    void progressIndeterminate(bool indeterminate);
    void progressEmptied();
    void commandFailures(const QStringList &failures);

private:
    std::atomic<bool> &m_busy;
};

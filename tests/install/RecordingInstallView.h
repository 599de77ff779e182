#pragma once

#include "install/InstallView.h"

#include <QStringList>

// Writes every effect of an installation as one line, so a test can state the whole
// sequence the window would show.
class RecordingInstallView final : public InstallView {
public:
    QStringList events;

    void progressPrepared(int maximum) override { events << QStringLiteral("max %1").arg(maximum); }
    void taskState(const QString &rootPath, const QString &backupFolder) override {
        events << QStringLiteral("state %1|%2").arg(rootPath, backupFolder);
    }
    void setControlsEnabled(bool enabled) override {
        events << (enabled ? QStringLiteral("enable") : QStringLiteral("disable"));
    }
    void setWorking(bool working) override {
        events << QStringLiteral("working %1").arg(working ? 1 : 0);
    }
    void bundleStarted(int index, int count, const QString &) override {
        events << QStringLiteral("bundle %1/%2").arg(index).arg(count);
    }
    void setIndeterminate(bool indeterminate) override {
        events << QStringLiteral("indeterminate %1").arg(indeterminate ? 1 : 0);
    }
    void reevaluateVolume() override { events << QStringLiteral("reevaluate"); }
    void showError(const QString &message) override {
        events << QStringLiteral("error ") + message;
    }
    void showInfo(const QString &message) override { events << QStringLiteral("info ") + message; }
    void progressReset() override { events << QStringLiteral("reset"); }
};

#pragma once

#include "cli/CliContext.h"
#include "install/InstallView.h"

// An installation (or a restore, which is one) on the terminal: each bundle's step and
// the closing text on standard output, errors and failed commands on standard error.
class TerminalInstallView final : public InstallView {
public:
    TerminalInstallView(CliContext &c, QString verb) : m_c(c), m_verb(std::move(verb)) {}
    bool failed = false;

    void progressPrepared(int) override {}
    void taskState(const QString &, const QString &) override {}
    void setControlsEnabled(bool) override {}
    void setWorking(bool) override {}
    void bundleStarted(int index, int count, const QString &path) override;
    void setIndeterminate(bool) override {}
    void reevaluateVolume() override {}
    void commandsFailed(const QStringList &failures) override;
    void showError(const QString &message) override;
    void showInfo(const QString &message) override { m_c.note(message); }
    void progressReset() override {}

private:
    CliContext &m_c;
    QString m_verb;
};

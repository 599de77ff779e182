#pragma once

#include "cli/CliContext.h"
#include "install/InstallView.h"

// An installation (or a restore, which is one) on the terminal: each bundle's step on
// standard output, failed commands on standard error (the end is CliContext::end's).
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
    void progressReset() override {}

private:
    CliContext &m_c;
    QString m_verb;
};

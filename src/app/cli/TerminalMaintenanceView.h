#pragma once

#include "cli/CliContext.h"
#include "maintenance/MaintenanceView.h"

// The maintenance plan on a terminal: status lines on standard output, failed commands
// on standard error (the end is CliContext::end's).
class TerminalMaintenanceView final : public MaintenanceView {
public:
    // `verb` names the command in the lines about failed commands.
    TerminalMaintenanceView(CliContext &c, QString verb) : m_c(c), m_verb(std::move(verb)) {}
    bool failed = false;

    void rootPathChosen(const QString &) override {}
    void setControlsEnabled(bool) override {}
    void setWorking(bool) override {}
    void setSpinning(bool) override {}
    void setStatus(const QString &text) override;
    void reevaluateVolume() override {}
    void commandsFailed(const QStringList &failures) override;

private:
    CliContext &m_c;
    QString m_verb;
};

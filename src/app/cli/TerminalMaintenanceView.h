#pragma once

#include "cli/CliContext.h"
#include "maintenance/MaintenanceView.h"

// The maintenance plan on a terminal: status lines and the closing text on standard
// output, errors on standard error.
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
    void showError(const QString &message) override;
    void showInfo(const QString &message) override;

private:
    CliContext &m_c;
    QString m_verb;
};

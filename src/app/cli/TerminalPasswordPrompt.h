#pragma once

#include "exec/PasswordPrompt.h"

// Asks for the administrator password on the terminal with echo switched off.
class TerminalPasswordPrompt final : public PasswordPrompt {
public:
    std::optional<QString> askPassword(const QString &reason) override;
};

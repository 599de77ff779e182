#pragma once

#include "exec/PasswordPrompt.h"

#include <optional>

// Asks for the user's own password on the terminal (echo off when it is one), up to three
// times when sudo calls it wrong, the way sudo itself does.
class TerminalPasswordPrompt final : public PasswordPrompt {
public:
    static constexpr int maxTries = 3;
    bool askPassword(const QString &reason, const Check &check) override;
    void showError(const QString &text) override;

private:
    // One line of standard input; absent at its end.
    static std::optional<QString> readLine();
};

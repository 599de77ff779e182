#pragma once

#include "exec/PasswordPrompt.h"

#include <optional>

// The password dialog as a test scripts it: gives `answer` (none: cancelled) and counts
// how often it was asked.
class ScriptedPrompt final : public PasswordPrompt {
public:
    std::optional<QString> answer;
    int asked = 0;
    std::optional<QString> askPassword(const QString &) override {
        ++asked;
        return answer;
    }
};

#pragma once

#include <QString>
#include <optional>

// Asks the user for the administrator password. The window's implementation shows our
// dialog on the UI thread even when asked from a background job; the command line asks
// on the terminal. Absent when the user cancelled.
class PasswordPrompt {
public:
    virtual ~PasswordPrompt() = default;
    virtual std::optional<QString> askPassword(const QString &reason) = 0;
};

#pragma once

#include <QString>
#include <functional>

// Asks the user for their own password, which sudo checks for administrator rights. The
// window's implementation shows our dialog on the UI thread even when asked from a
// background job; the command line asks on the terminal.
class PasswordPrompt {
public:
    enum class Verdict { Granted, WrongPassword, Refused };
    // Hands one typed password to sudo. A wrong password is asked again (the window until
    // Cancel, the terminal three times in all); a refusal ends the asking.
    using Check = std::function<Verdict(const QString &password)>;

    virtual ~PasswordPrompt() = default;
    // True when a password was granted; false on Cancel, refusal or too many tries.
    virtual bool askPassword(const QString &reason, const Check &check) = 0;
    // A complete sentence on why root tasks cannot run (sudo's own refusal, no sudo).
    virtual void showError(const QString &text) = 0;
};

#pragma once

#include <QString>

// Finds sudo the way a login shell would, and no other way: the first executable file
// named sudo in an absolute PATH entry, else /usr/bin/sudo. The current folder, empty
// entries ("::", a leading or trailing ":") and relative entries are skipped, because
// whoever controls them (a downloaded folder, a shared checkout) would otherwise receive
// the user's password on standard input.
class SudoLocator {
public:
    static QString defaultFallback() { return QStringLiteral("/usr/bin/sudo"); }

    // The absolute path of sudo, or "" when there is none.
    static QString find(const QString &pathVariable, const QString &fallback = defaultFallback());
    // find() on our own PATH.
    static QString fromEnvironment();
};

#pragma once

#include "exec/Command.h"
#include "volumes/SystemPaths.h"

#include <QString>

// The libraries a kext links against, as the system's kext library tool lists them on
// its standard output (its headings go to standard error and are not shown).
class DependencyListing {
public:
    static Command command(const SystemPaths &paths, const QString &kext);
    // Runs the tool as the user; "" when it printed nothing readable.
    static QString run(const SystemPaths &paths, const QString &kext);
};

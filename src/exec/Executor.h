#pragma once

#include "exec/Command.h"

#include <QFileInfo>

// How a plan runs its root sequence and tests the folders it works on. The window and
// the command line use the privileged session; --dry-run prints the commands and follows
// their effects on a simulated overlay; tests record them.
class Executor {
public:
    virtual ~Executor() = default;
    // The root-task pattern; false means the administrator refused and the task ends
    // silently.
    virtual bool authorize() = 0;
    // One command of a root sequence.
    virtual CommandResult run(const Command &command) = 0;
    // Whether a path exists as the commands run so far have left it. A dry run answers
    // from its overlay, so its next command is the one the real run would choose.
    virtual bool exists(const QString &path) const { return QFileInfo::exists(path); }
    // True when the commands change nothing on disk (a dry run, a recording): a plan
    // then skips the checks that read back what a command wrote.
    virtual bool simulated() const { return false; }
};

#pragma once

#include "exec/Command.h"

// How a plan runs its root sequence. The window and the command line use the
// privileged session; --dry-run prints the commands; tests record them.
class Executor {
public:
    virtual ~Executor() = default;
    // The root-task pattern; false means the administrator refused and the task ends
    // silently.
    virtual bool authorize() = 0;
    // One command of a root sequence; its result is never examined.
    virtual void run(const Command &command) = 0;
};

#pragma once

#include "exec/TaskResult.h"

#include <QString>
#include <functional>
#include <optional>

// Unloading and reloading a loaded kext: one root command line each ("kextunload",
// "kextload" by bare name, so the root shell's search path finds them), whose standard
// error text is the whole answer: a failure with the tool's text exactly as written.
// Empty text is success; a refused authorization also comes back empty and so counts as
// success. No path, or nothing there, ends it at once: a failure without a word.
class KextUnloader {
public:
    // Runs `command 'argument'` as root and returns its error text.
    using RootRun =
        std::function<std::optional<QString>(const QString &command, const QString &argument)>;

    explicit KextUnloader(RootRun run);

    TaskResult unload(const QString &kextPath) const;
    // Unloads, and only when that succeeded loads the same path again.
    TaskResult reload(const QString &kextPath) const;

private:
    TaskResult runStep(const QString &command, const QString &kextPath) const;
    RootRun m_run;
};

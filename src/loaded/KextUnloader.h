#pragma once

#include <QString>
#include <functional>
#include <optional>

// Unloading and reloading a loaded kext: one root command line each ("kextunload",
// "kextload" by bare name, so the root shell's search path finds them), whose standard
// error text is the whole answer. Empty text is success; a refused authorization also
// comes back empty and so counts as success.
class KextUnloader {
public:
    // Runs `command 'argument'` as root and returns its error text.
    using RootRun =
        std::function<std::optional<QString>(const QString &command, const QString &argument)>;

    enum class Outcome {
        Skipped, // no path, or nothing there: nothing ran
        Done,
        Failed, // `error` holds the tool's text exactly as written
    };
    struct Result {
        Outcome outcome = Outcome::Skipped;
        QString error;
    };

    explicit KextUnloader(RootRun run);

    Result unload(const QString &kextPath) const;
    // Unloads, and only when that succeeded loads the same path again.
    Result reload(const QString &kextPath) const;

private:
    Result runStep(const QString &command, const QString &kextPath) const;
    RootRun m_run;
};

#pragma once

#include "loaded/LoadedKextRows.h"
#include "volumes/SystemPaths.h"

#include <QString>
#include <QStringList>
#include <functional>
#include <future>
#include <optional>

// Writes the plain-text system report of the started system: software and hardware
// overviews, the Extra folder's kexts and every loaded kext with its version, path and
// architectures. Three jobs run at once: the overview and Extra sections on the shared
// background pool, and the loaded kexts' rows in two halves on threads named "LKGCD1"
// and "LKGCD2". A writer job waits for all three, appends the rows and writes the file.
// Every report has its own state, so two reports never mix.
class SystemReport {
public:
    struct Sources {
        SystemPaths paths;
        // Runs a tool as the user (absolute path, already below the system root) and
        // returns its standard output.
        std::function<std::optional<QString>(const QString &tool, const QStringList &args)> runTool;
        LoadedKextRows::PathLookup pathOf;
        LoadedKextRows::Probe probe;
    };

    enum class Outcome {
        Saved,     // the file was written (or its write attempted: see `written`)
        Abandoned, // both Extra kext folders exist; no file was written
    };
    struct End {
        Outcome outcome = Outcome::Saved;
        QString message; // "Saved." or the error text
        bool written = false;
    };
    using EndHandler = std::function<void(const End &)>;

    // Starts the jobs and returns at once. `onEnd` is called once from a worker thread
    // when the report ended; the future gives the same answer to those who wait.
    static std::shared_future<End> start(Sources sources, const QString &file,
                                         EndHandler onEnd = {});

    // The two overviews' command lines (arguments after the tool).
    static QStringList softwareArgs() { return {QStringLiteral("SPSoftwareDataType")}; }
    static QStringList hardwareArgs() {
        return {QStringLiteral("SPHardwareDataType"), QStringLiteral("-detailLevel"),
                QStringLiteral("mini")};
    }
    static QString profilerTool(const SystemPaths &paths);
    static QString kextstatTool(const SystemPaths &paths);
};

#pragma once

#include "exec/TaskResult.h"
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

    // Starts the jobs and returns at once; the future gives the report's end: "Saved."
    // (with a quiet failure when the file could not be written), or, when both Extra kext
    // folders exist, their error and no file.
    static std::shared_future<TaskResult> start(Sources sources, const QString &file);

    // The two overviews' command lines (arguments after the tool).
    static QStringList softwareArgs() { return {QStringLiteral("SPSoftwareDataType")}; }
    static QStringList hardwareArgs() {
        return {QStringLiteral("SPHardwareDataType"), QStringLiteral("-detailLevel"),
                QStringLiteral("mini")};
    }
    static QString profilerTool(const SystemPaths &paths);
    static QString kextstatTool(const SystemPaths &paths);
};

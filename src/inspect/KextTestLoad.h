#pragma once

#include "exec/Command.h"
#include "volumes/SystemPaths.h"

#include <QString>
#include <functional>
#include <optional>

class Executor;
class KextLocationIndex;

// Loads a kext into the running kernel as a test. The kext's folder joins the custom
// kext folders first (so the loaded kext browser can find the kext later), the bundle is
// given to root, and the loader runs through the root script: its error text, if any,
// is the answer. Success is silent.
class KextTestLoad {
public:
    using RootRun =
        std::function<std::optional<QString>(const QString &command, const QString &argument)>;

    enum class Outcome {
        NoKext,  // nothing chosen: message says so
        Stopped, // authorization refused or the kext is gone: no message
        Loaded,
        Failed, // message holds the loader's text
    };
    struct Result {
        Outcome outcome;
        QString message;
    };

    KextTestLoad(const SystemPaths &paths, Executor &executor, KextLocationIndex &index,
                 RootRun rootRun);

    static Command chownCommand(const SystemPaths &paths, const QString &kext);
    static QString loaderName() { return QStringLiteral("kextload"); }
    static QString noKextMessage();

    Result run(const QString &kext) const;

private:
    SystemPaths m_paths;
    Executor &m_executor;
    KextLocationIndex &m_index;
    RootRun m_rootRun;
};

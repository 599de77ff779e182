#pragma once

#include "exec/Command.h"
#include "exec/TaskResult.h"
#include "volumes/SystemPaths.h"

#include <QString>
#include <functional>
#include <optional>

class Executor;
class KextLocationIndex;

// Loads a kext into the running kernel as a test. The kext's folder joins the custom
// kext folders first (so the loaded kext browser can find the kext later), the bundle is
// given to root, and the loader runs through the root script: its error text, if any,
// is the answer. Success is silent; no kext chosen and a loader's complaint are errors; a
// refused password or a kext gone meanwhile end it without a word.
class KextTestLoad {
public:
    using RootRun =
        std::function<std::optional<QString>(const QString &command, const QString &argument)>;

    KextTestLoad(const SystemPaths &paths, Executor &executor, KextLocationIndex &index,
                 RootRun rootRun);

    static Command chownCommand(const SystemPaths &paths, const QString &kext);
    static QString loaderName() { return QStringLiteral("kextload"); }
    static QString noKextMessage();

    TaskResult run(const QString &kext) const;

private:
    SystemPaths m_paths;
    Executor &m_executor;
    KextLocationIndex &m_index;
    RootRun m_rootRun;
};

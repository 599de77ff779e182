#include "loaded/KextUnloader.h"

#include <QFileInfo>

namespace {
bool runnable(const QString &kextPath) {
    return !kextPath.isEmpty() && QFileInfo::exists(kextPath);
}
} // namespace

KextUnloader::KextUnloader(RootRun run) : m_run(std::move(run)) {}

TaskResult KextUnloader::unload(const QString &kextPath) const {
    if (!runnable(kextPath))
        return TaskResult::failed();
    return runStep(QStringLiteral("kextunload"), kextPath);
}

TaskResult KextUnloader::reload(const QString &kextPath) const {
    if (!runnable(kextPath))
        return TaskResult::failed();
    const TaskResult unloaded = runStep(QStringLiteral("kextunload"), kextPath);
    if (!unloaded.ok)
        return unloaded;
    return runStep(QStringLiteral("kextload"), kextPath);
}

TaskResult KextUnloader::runStep(const QString &command, const QString &kextPath) const {
    const QString error = m_run(command, kextPath).value_or(QString());
    return error.isEmpty() ? TaskResult::done() : TaskResult::failed(error);
}

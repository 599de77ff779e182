#include "loaded/KextUnloader.h"

#include <QFileInfo>

namespace {
bool runnable(const QString &kextPath) {
    return !kextPath.isEmpty() && QFileInfo::exists(kextPath);
}
} // namespace

KextUnloader::KextUnloader(RootRun run) : m_run(std::move(run)) {}

KextUnloader::Result KextUnloader::unload(const QString &kextPath) const {
    if (!runnable(kextPath))
        return {};
    return runStep(QStringLiteral("kextunload"), kextPath);
}

KextUnloader::Result KextUnloader::reload(const QString &kextPath) const {
    if (!runnable(kextPath))
        return {};
    const Result unloaded = runStep(QStringLiteral("kextunload"), kextPath);
    if (unloaded.outcome == Outcome::Failed)
        return unloaded;
    return runStep(QStringLiteral("kextload"), kextPath);
}

KextUnloader::Result KextUnloader::runStep(const QString &command, const QString &kextPath) const {
    const QString error = m_run(command, kextPath).value_or(QString());
    if (error.isEmpty())
        return {Outcome::Done, QString()};
    return {Outcome::Failed, error};
}

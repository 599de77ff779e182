#include "inspect/KextTestLoad.h"

#include "exec/Executor.h"
#include "exec/Tr.h"
#include "volumes/KextLocationIndex.h"

#include <QFileInfo>

KextTestLoad::KextTestLoad(const SystemPaths &paths, Executor &executor, KextLocationIndex &index,
                           RootRun rootRun)
    : m_paths(paths), m_executor(executor), m_index(index), m_rootRun(std::move(rootRun)) {}

Command KextTestLoad::chownCommand(const SystemPaths &paths, const QString &kext) {
    return {paths.system(QStringLiteral("/usr/sbin/chown")), {QStringLiteral("-R"), "0:0", kext}};
}

QString KextTestLoad::noKextMessage() {
    return kkTr("You haven't selected any kext.");
}

TaskResult KextTestLoad::run(const QString &kext) const {
    if (kext.isEmpty())
        return TaskResult::failed(noKextMessage());
    if (!m_executor.authorize() || !QFileInfo::exists(kext))
        return TaskResult::failed();
    // Counting first loads the saved folders, so the new one is added to them rather
    // than replacing them.
    m_index.customFolderCount();
    m_index.rememberFolderOf(kext);
    // The loader refuses bundles not owned by root; the new owner stays even if the
    // load then fails.
    m_executor.run(chownCommand(m_paths, kext));
    const QString errors = m_rootRun(loaderName(), kext).value_or(QString());
    return errors.isEmpty() ? TaskResult::done() : TaskResult::failed(errors);
}

#include "maintenance/ExtraFolderOperations.h"

#include "exec/Executor.h"
#include "exec/Tr.h"
#include "maintenance/ExtraFolderView.h"
#include "maintenance/MkextRebuild.h"

ExtraFolderOperations::ExtraFolderOperations(const SystemPaths &paths, Executor &executor,
                                             ExtraFolderView &view)
    : m_paths(paths), m_executor(executor), m_view(view) {}

KextFolders ExtraFolderOperations::chooseVolume() {
    const KextFolders folders(m_paths.volumeRoot(m_view.selectedVolume()));
    m_view.rootPathChosen(folders.root());
    return folders;
}

std::optional<TaskResult> ExtraFolderOperations::restoreExtensionsFolder() {
    if (!m_executor.exists(chooseVolume().kextStore()))
        return TaskResult::failed(kkTr("No Extra/KextStore found."));
    m_view.askToContinue(
        kkTr("Do you want to bring back Extra/Extensions from Extra/KextStore on selected disk?"),
        [this](int code) { restoreAnswered(code); });
    return std::nullopt;
}

TaskResult ExtraFolderOperations::restoreAnswered(int returnCode) {
    if (returnCode != ExtraFolderView::yesCode)
        return m_lastAnswer = TaskResult::done();
    // The volume may have changed while the question was open; the folders are not
    // looked at again, the commands act on whatever is there now.
    const KextFolders folders = chooseVolume();
    if (!m_executor.authorize())
        return m_lastAnswer = TaskResult::failed();
    if (m_executor.exists(folders.extraMkext()))
        run(QStringLiteral("/bin/rm"), {QStringLiteral("-R"), folders.extraMkext()});
    run(QStringLiteral("/bin/mv"), {folders.kextStore(), folders.extensions()});
    m_view.reevaluateVolume();
    return m_lastAnswer = done();
}

std::optional<TaskResult> ExtraFolderOperations::createKextStore() {
    if (!m_executor.exists(chooseVolume().extensions()))
        return TaskResult::failed(kkTr("No Extra/Extensions found."));
    m_view.askToContinue(
        kkTr("Do you want to create Extra/KextStore from Extra/Extensions on selected disk?") +
            QLatin1Char('\n') + kkTr("Mkext will be created, it can take a while."),
        [this](int code) { createAnswered(code); });
    return std::nullopt;
}

TaskResult ExtraFolderOperations::createAnswered(int returnCode) {
    if (returnCode != ExtraFolderView::yesCode)
        return m_lastAnswer = TaskResult::done();
    const KextFolders folders = chooseVolume();
    if (!m_executor.authorize())
        return m_lastAnswer = TaskResult::failed();
    run(QStringLiteral("/bin/mv"), {folders.extensions(), folders.kextStore()});
    run(mkextRebuildCommand(m_paths, folders.extraMkext(), folders.kextStore()));
    m_view.reevaluateVolume();
    return m_lastAnswer = done();
}

TaskResult ExtraFolderOperations::showExtraFolder() {
    return setHidden(false);
}

TaskResult ExtraFolderOperations::hideExtraFolder() {
    return setHidden(true);
}

TaskResult ExtraFolderOperations::setHidden(bool hidden) {
    const QString extra = chooseVolume().extra();
    // Checked before asking for a password: there is nothing to hide.
    if (!m_executor.exists(extra))
        return TaskResult::failed(kkTr("No Extra folder on selected disk."));
    if (!m_executor.authorize())
        return TaskResult::failed();
    run(QStringLiteral("/usr/bin/chflags"),
        {hidden ? QStringLiteral("hidden") : QStringLiteral("nohidden"), extra});
    return done();
}

TaskResult ExtraFolderOperations::done() {
    if (!m_failed.isEmpty())
        m_view.commandsFailed(m_failed.lines());
    m_failed = FailedCommands();
    return TaskResult::done();
}

void ExtraFolderOperations::run(const QString &tool, const QStringList &args) {
    run(Command{m_paths.system(tool), args, true});
}

void ExtraFolderOperations::run(const Command &command) {
    m_failed.note(command, m_executor.run(command));
}

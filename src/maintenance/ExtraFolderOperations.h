#pragma once

#include "exec/FailedCommands.h"
#include "exec/TaskResult.h"
#include "volumes/KextFolders.h"
#include "volumes/SystemPaths.h"

#include <QString>
#include <QStringList>
#include <optional>

class Executor;
class ExtraFolderView;

// The four commands of the Extra menu: move KextStore back to Extensions (dropping the
// mkext), move Extensions into KextStore (and build the mkext from it), and hide or show
// the Extra folder. They always work on the plain Extra folder, whatever version folder
// is chosen, and run their root commands one after another; a failed command does not
// stop the next, and the failures are told when the operation ends. A missing folder ends
// a command with its error; a refused password or a "No" ends it without a word.
class ExtraFolderOperations {
public:
    ExtraFolderOperations(const SystemPaths &paths, Executor &executor, ExtraFolderView &view);

    // The two moves ask first: empty while the question is open, and the answer's
    // handler (called by the view) finishes the job.
    std::optional<TaskResult> restoreExtensionsFolder();
    TaskResult restoreAnswered(int returnCode);
    std::optional<TaskResult> createKextStore();
    TaskResult createAnswered(int returnCode);
    TaskResult showExtraFolder();
    TaskResult hideExtraFolder();

    // How the last answered question ended (for a caller whose question was answered
    // while it waited).
    TaskResult lastAnswer() const { return m_lastAnswer; }

private:
    KextFolders chooseVolume();
    TaskResult setHidden(bool hidden);
    TaskResult done();
    void run(const QString &tool, const QStringList &args);
    void run(const Command &command);

    SystemPaths m_paths;
    Executor &m_executor;
    ExtraFolderView &m_view;
    TaskResult m_lastAnswer;
    FailedCommands m_failed;
};

#pragma once

#include "exec/FailedCommands.h"
#include "volumes/SystemPaths.h"

#include <QString>
#include <QStringList>

class Executor;
class ExtraFolderView;

// The four commands of the Extra menu: move KextStore back to Extensions (dropping the
// mkext), move Extensions into KextStore (and build the mkext from it), and hide or show
// the Extra folder. They always work on the plain Extra folder, whatever version folder
// is chosen, and run their root commands one after another; a failed command does not
// stop the next, and the failures are told when the operation ends.
class ExtraFolderOperations {
public:
    enum class Outcome {
        Done,     // the commands ran
        Asking,   // the question is open; the answer handler finishes the job
        Declined, // the user said no
        Refused,  // no administrator rights: nothing ran, nothing is said
        Missing,  // the folder to work on is missing (an error alert was shown)
    };

    ExtraFolderOperations(const SystemPaths &paths, Executor &executor, ExtraFolderView &view);

    Outcome BringBackEE();
    Outcome selectedbutton(int returnCode);
    Outcome MI_CreateEKS();
    Outcome selectedbuttoncreate(int returnCode);
    Outcome ShowExtra();
    Outcome HideExtra();

    // The outcome of the last answer handler (for a caller whose question was answered
    // while it waited).
    Outcome lastAnswer() const { return m_lastAnswer; }

private:
    QString chooseRoot();
    Outcome setHidden(bool hidden);
    Outcome done();
    void run(const QString &tool, const QStringList &args);
    void run(const Command &command);

    SystemPaths m_paths;
    Executor &m_executor;
    ExtraFolderView &m_view;
    Outcome m_lastAnswer = Outcome::Declined;
    FailedCommands m_failed;
};

#include "maintenance/ExtraFolderOperations.h"

#include "exec/Executor.h"
#include "exec/Tr.h"
#include "maintenance/ExtraFolderView.h"
#include "maintenance/MkextRebuild.h"

ExtraFolderOperations::ExtraFolderOperations(const SystemPaths &paths, Executor &executor,
                                             ExtraFolderView &view)
    : m_paths(paths), m_executor(executor), m_view(view) {}

QString ExtraFolderOperations::chooseRoot() {
    const QString root = m_paths.volumeRoot(m_view.selectedVolume()) + QLatin1Char('/');
    m_view.rootPathChosen(root);
    return root;
}

ExtraFolderOperations::Outcome ExtraFolderOperations::BringBackEE() {
    const QString root = chooseRoot();
    if (!m_executor.exists(root + QStringLiteral("Extra/KextStore"))) {
        m_view.showError(kkTr("No Extra/KextStore found."));
        return Outcome::Missing;
    }
    m_view.askToContinue(
        kkTr("Do you want to bring back Extra/Extensions from Extra/KextStore on selected disk?"),
        [this](int code) { selectedbutton(code); });
    return Outcome::Asking;
}

ExtraFolderOperations::Outcome ExtraFolderOperations::selectedbutton(int returnCode) {
    m_lastAnswer = Outcome::Declined;
    if (returnCode != ExtraFolderView::yesCode)
        return m_lastAnswer;
    // The volume may have changed while the question was open; the folders are not
    // looked at again, the commands act on whatever is there now.
    const QString root = chooseRoot();
    if (!m_executor.authorize())
        return m_lastAnswer = Outcome::Refused;
    const QString mkext = root + QStringLiteral("Extra/Extensions.mkext");
    if (m_executor.exists(mkext))
        run(QStringLiteral("/bin/rm"), {QStringLiteral("-R"), mkext});
    run(QStringLiteral("/bin/mv"),
        {root + QStringLiteral("Extra/KextStore"), root + QStringLiteral("Extra/Extensions")});
    m_view.reevaluateVolume();
    return m_lastAnswer = done();
}

ExtraFolderOperations::Outcome ExtraFolderOperations::MI_CreateEKS() {
    const QString root = chooseRoot();
    if (!m_executor.exists(root + QStringLiteral("Extra/Extensions"))) {
        m_view.showError(kkTr("No Extra/Extensions found."));
        return Outcome::Missing;
    }
    m_view.askToContinue(
        kkTr("Do you want to create Extra/KextStore from Extra/Extensions on selected disk?") +
            QLatin1Char('\n') + kkTr("Mkext will be created, it can take a while."),
        [this](int code) { selectedbuttoncreate(code); });
    return Outcome::Asking;
}

ExtraFolderOperations::Outcome ExtraFolderOperations::selectedbuttoncreate(int returnCode) {
    m_lastAnswer = Outcome::Declined;
    if (returnCode != ExtraFolderView::yesCode)
        return m_lastAnswer;
    const QString root = chooseRoot();
    if (!m_executor.authorize())
        return m_lastAnswer = Outcome::Refused;
    const QString kextStore = root + QStringLiteral("Extra/KextStore");
    run(QStringLiteral("/bin/mv"), {root + QStringLiteral("Extra/Extensions"), kextStore});
    run(mkextRebuildCommand(m_paths, root + QStringLiteral("Extra/Extensions.mkext"), kextStore));
    m_view.reevaluateVolume();
    return m_lastAnswer = done();
}

ExtraFolderOperations::Outcome ExtraFolderOperations::ShowExtra() {
    return setHidden(false);
}

ExtraFolderOperations::Outcome ExtraFolderOperations::HideExtra() {
    return setHidden(true);
}

ExtraFolderOperations::Outcome ExtraFolderOperations::setHidden(bool hidden) {
    const QString extra = chooseRoot() + QStringLiteral("Extra");
    // Checked before asking for a password: there is nothing to hide.
    if (!m_executor.exists(extra)) {
        m_view.showError(kkTr("No Extra folder on selected disk."));
        return Outcome::Missing;
    }
    if (!m_executor.authorize())
        return Outcome::Refused;
    run(QStringLiteral("/usr/bin/chflags"),
        {hidden ? QStringLiteral("hidden") : QStringLiteral("nohidden"), extra});
    return done();
}

ExtraFolderOperations::Outcome ExtraFolderOperations::done() {
    if (!m_failed.isEmpty())
        m_view.commandsFailed(m_failed.lines());
    m_failed = FailedCommands();
    return Outcome::Done;
}

void ExtraFolderOperations::run(const QString &tool, const QStringList &args) {
    run(Command{m_paths.system(tool), args, true});
}

void ExtraFolderOperations::run(const Command &command) {
    m_failed.note(command, m_executor.run(command));
}

#include "maintenance/ExtraFolderOperations.h"

#include "exec/Executor.h"
#include "exec/Tr.h"
#include "maintenance/ExtraFolderView.h"
#include "maintenance/MkextRebuild.h"

#include <QFileInfo>

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
    if (!QFileInfo::exists(root + QStringLiteral("Extra/KextStore"))) {
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
    if (QFileInfo::exists(mkext))
        run(QStringLiteral("/bin/rm"), {QStringLiteral("-R"), mkext});
    run(QStringLiteral("/bin/mv"),
        {root + QStringLiteral("Extra/KextStore"), root + QStringLiteral("Extra/Extensions")});
    m_view.reevaluateVolume();
    return m_lastAnswer = Outcome::Done;
}

ExtraFolderOperations::Outcome ExtraFolderOperations::MI_CreateEKS() {
    const QString root = chooseRoot();
    if (!QFileInfo::exists(root + QStringLiteral("Extra/Extensions"))) {
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
    m_executor.run(
        mkextRebuildCommand(m_paths, root + QStringLiteral("Extra/Extensions.mkext"), kextStore));
    m_view.reevaluateVolume();
    return m_lastAnswer = Outcome::Done;
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
    if (!QFileInfo::exists(extra)) {
        m_view.showError(kkTr("No Extra folder on selected disk."));
        return Outcome::Missing;
    }
    if (!m_executor.authorize())
        return Outcome::Refused;
    // Where chflags is missing (not a Mac) the command simply fails, and as on a Mac a
    // failure here is not reported.
    run(QStringLiteral("/usr/bin/chflags"),
        {hidden ? QStringLiteral("hidden") : QStringLiteral("nohidden"), extra});
    return Outcome::Done;
}

void ExtraFolderOperations::run(const QString &tool, const QStringList &args) {
    m_executor.run(Command{m_paths.system(tool), args, true});
}

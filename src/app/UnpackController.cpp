#include "UnpackController.h"

#include "FilePanels.h"
#include "MainWindow.h"
#include "TovrelAppDelegate.h"
#include "exec/AppServices.h"
#include "exec/CommandJournal.h"
#include "inspect/DroppedFile.h"
#include "pages/UnpackPage.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QStatusBar>

UnpackController::UnpackController(TovrelAppDelegate &delegate, AppServices &services,
                                   FilePanels &panels)
    : QObject(&delegate), m_delegate(delegate), m_services(services), m_panels(panels) {
    UnpackPage *page = delegate.unpackPage();
    connect(page, &UnpackPage::chooseMkextClicked, this, &UnpackController::bSelectMkext);
    connect(page, &UnpackPage::chooseFolderClicked, this, &UnpackController::bSelectFolderToUnpack);
    connect(page, &UnpackPage::unpackClicked, this, &UnpackController::bUnpck);
    connect(&delegate, &TovrelAppDelegate::filesDropped, this, &UnpackController::onDrop);
}

MkextUnpackTask UnpackController::unpacker() const {
    const SystemPaths &paths = m_services.paths();
    // Linux and newer macOS have no mkextunpack; our reader prints what it would.
    const bool builtin = !MkextUnpackTask::hasSystemTool(paths);
    if (builtin)
        m_delegate.window().statusBar()->showMessage(
            tr("%1 is missing: the built-in mkext reader is used instead.")
                .arg(MkextUnpackTask::toolPath(paths)));
    return MkextUnpackTask(paths, builtin ? MkextUnpackTask::builtinTool()
                                          : MkextUnpackTask::systemTool(paths));
}

void UnpackController::bSelectMkext() {
    m_panels.open(FilePanels::Kind::Mkext,
                  [guard = QPointer(this)](int returnCode, const QStringList &paths) {
                      if (guard)
                          guard->OpenMkextPanelDidEnd(returnCode, paths.value(0));
                  });
}

void UnpackController::OpenMkextPanelDidEnd(int returnCode, const QString &mkext) {
    if (returnCode == 1)
        listMkext(mkext);
}

void UnpackController::bSelectFolderToUnpack() {
    m_panels.open(FilePanels::Kind::Folder,
                  [guard = QPointer(this)](int returnCode, const QStringList &paths) {
                      if (guard)
                          guard->OpenFolderToMkextUnpackPanelDidEnd(returnCode, paths.value(0));
                  });
}

void UnpackController::OpenFolderToMkextUnpackPanelDidEnd(int returnCode, const QString &folder) {
    if (returnCode == 1)
        m_delegate.unpackPage()->setFolder(folder);
}

void UnpackController::listMkext(const QString &mkext) {
    UnpackPage *page = m_delegate.unpackPage();
    page->setSpinning(true);
    page->showMkext(mkext, unpacker().listing(mkext));
    page->setSpinning(false);
}

void UnpackController::bUnpck() {
    UnpackPage *page = m_delegate.unpackPage();
    CommandJournal *journal = m_services.journal();
    const SystemPaths &paths = m_services.paths();
    // Unpacking writes bundles: a run of the system's tool is journaled as one of the
    // user's commands that change something, and a dry run only lists it.
    const Command command{
        MkextUnpackTask::toolPath(paths),
        MkextUnpackTask::unpackArgs(page->architecture(), page->folder(), page->mkext()), false};
    if (m_services.dryRun() && !page->mkext().isEmpty()) {
        if (journal)
            journal->recordPlanned(command);
        m_delegate.window().statusBar()->showMessage(
            tr("Dry run: the unpack is listed in the Log; nothing was written."));
        return;
    }
    page->setSpinning(true);
    const QDateTime started = QDateTime::currentDateTimeUtc();
    QElapsedTimer timer;
    timer.start();
    const TaskResult result =
        unpacker().unpack(page->mkext(), page->architecture(), page->folder());
    if (journal && !page->mkext().isEmpty() && MkextUnpackTask::hasSystemTool(paths)) {
        JournalEntry entry;
        entry.time = started;
        entry.command = command;
        entry.result = {true, result.ok ? 0 : 1, result.ok ? QString() : result.message};
        entry.durationMs = timer.elapsed();
        journal->record(entry);
    }
    page->setSpinning(false);
    m_services.alerts().showResult(result, &m_delegate.window());
}

void UnpackController::onDrop(const QStringList &files) {
    const DroppedFile drop(files, m_delegate.window().currentPage());
    if (drop.action() == DroppedFile::Action::ListMkext)
        listMkext(drop.path());
}

#include "UnpackController.h"

#include "MainWindow.h"
#include "TovrelAppDelegate.h"
#include "exec/IconAlert.h"
#include "inspect/DroppedFile.h"
#include "pages/UnpackPage.h"
#include "ui_UnpackPage.h"

#include <QFileDialog>
#include <QPointer>
#include <QStatusBar>

UnpackController::UnpackController(TovrelAppDelegate &delegate)
    : QObject(&delegate), m_delegate(delegate) {
    Ui::UnpackPage *page = ui();
    connect(page->bSelectMkext, &QPushButton::clicked, this, &UnpackController::bSelectMkext);
    connect(page->bSelectFolderToUnpack, &QPushButton::clicked, this,
            &UnpackController::bSelectFolderToUnpack);
    connect(page->bUnpck, &QPushButton::clicked, this, &UnpackController::bUnpck);
    connect(&delegate, &TovrelAppDelegate::filesDropped, this, &UnpackController::onDrop);
}

Ui::UnpackPage *UnpackController::ui() const {
    return m_delegate.unpackPage()->ui();
}

MkextUnpackTask UnpackController::unpacker() const {
    const SystemPaths &paths = IconAlert::defaultinst().paths();
    // Linux and newer macOS have no mkextunpack; our reader prints what it would.
    const bool builtin = !MkextUnpackTask::hasSystemTool(paths);
    if (builtin)
        m_delegate.window().statusBar()->showMessage(
            tr("%1 is missing: the built-in mkext reader is used instead.")
                .arg(MkextUnpackTask::toolPath(paths)));
    return MkextUnpackTask(paths, builtin ? MkextUnpackTask::builtinTool()
                                          : MkextUnpackTask::systemTool(paths));
}

void UnpackController::openPanel(PanelKind kind, std::function<void(int, const QString &)> done) {
    if (m_panel) {
        m_panel(kind, done);
        return;
    }
    auto *panel = new QFileDialog(&m_delegate.window());
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setWindowModality(Qt::WindowModal);
    if (kind == PanelKind::Mkext) {
        panel->setFileMode(QFileDialog::ExistingFile);
        panel->setNameFilter(tr("Mkext archives (*.mkext)"));
    } else {
        // New folders may be made from the panel (the dialog offers it by default).
        panel->setFileMode(QFileDialog::Directory);
        panel->setOption(QFileDialog::ShowDirsOnly);
    }
    connect(panel, &QFileDialog::finished, panel, [panel, done](int result) {
        done(result == QDialog::Accepted ? 1 : 0, panel->selectedFiles().value(0));
    });
    panel->open();
}

void UnpackController::bSelectMkext() {
    openPanel(PanelKind::Mkext, [guard = QPointer(this)](int returnCode, const QString &mkext) {
        if (guard)
            guard->OpenMkextPanelDidEnd(returnCode, mkext);
    });
}

void UnpackController::OpenMkextPanelDidEnd(int returnCode, const QString &mkext) {
    if (returnCode == 1)
        listMkext(mkext);
}

void UnpackController::bSelectFolderToUnpack() {
    openPanel(PanelKind::Folder, [guard = QPointer(this)](int returnCode, const QString &folder) {
        if (guard)
            guard->OpenFolderToMkextUnpackPanelDidEnd(returnCode, folder);
    });
}

void UnpackController::OpenFolderToMkextUnpackPanelDidEnd(int returnCode, const QString &folder) {
    if (returnCode == 1)
        ui()->MKUnPath->setText(folder);
}

void UnpackController::listMkext(const QString &mkext) {
    Ui::UnpackPage *page = ui();
    page->circleUnpck->setVisible(true);
    page->MKPath->setText(mkext);
    page->tvMkext->setPlainText(unpacker().listing(mkext));
    page->circleUnpck->setVisible(false);
}

void UnpackController::bUnpck() {
    Ui::UnpackPage *page = ui();
    page->circleUnpck->setVisible(true);
    const MkextUnpackTask::Outcome outcome = unpacker().unpack(
        page->MKPath->text(), page->MkArch->currentText(), page->MKUnPath->text());
    page->circleUnpck->setVisible(false);
    IconAlert &icon = IconAlert::defaultinst();
    if (outcome.error)
        icon.ShowErrorMsg(outcome.message, &m_delegate.window());
    else
        icon.ShowInfoMsg(outcome.message, &m_delegate.window());
}

void UnpackController::onDrop(const QStringList &files) {
    const DroppedFile drop(files, m_delegate.window().currentPage());
    if (drop.action() == DroppedFile::Action::ListMkext)
        listMkext(drop.path());
}

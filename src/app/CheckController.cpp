#include "CheckController.h"

#include "MainWindow.h"
#include "TovrelAppDelegate.h"
#include "exec/AdminAuthentication.h"
#include "exec/IconAlert.h"
#include "exec/SessionExecutor.h"
#include "inspect/DependencyListing.h"
#include "inspect/DroppedFile.h"
#include "inspect/KextTestLoad.h"
#include "pages/CheckPage.h"
#include "ui_CheckPage.h"

#include <QFileDialog>
#include <QPointer>
#include <QtConcurrent>

CheckController::CheckController(TovrelAppDelegate &delegate)
    : QObject(&delegate), m_delegate(delegate) {
    Ui::CheckPage *page = ui();
    connect(page->bCheckSel, &QPushButton::clicked, this, &CheckController::bCheck);
    connect(page->bCheckDep, &QPushButton::clicked, this, &CheckController::BCheckDepen);
    connect(page->bKextLoad, &QPushButton::clicked, this, &CheckController::bkextload);
    connect(&delegate, &TovrelAppDelegate::filesDropped, this, &CheckController::onDrop);
    // The four boxes only report; the user cannot tick them.
    for (QCheckBox *box : {page->kx86_64, page->ki386, page->kppc, page->kppc64})
        box->setAttribute(Qt::WA_TransparentForMouseEvents);
}

Ui::CheckPage *CheckController::ui() const {
    return m_delegate.checkPage()->ui();
}

void CheckController::showError(const QString &message) {
    IconAlert::defaultinst().ShowErrorMsg(message, &m_delegate.window());
}

void CheckController::bCheck() {
    auto done = [guard = QPointer(this)](int returnCode, const QString &kext) {
        if (guard)
            guard->OpenKextToCheckPanelDidEnd(returnCode, kext);
    };
    if (m_panel)
        m_panel(done);
    else
        openPanel(done);
}

void CheckController::openPanel(std::function<void(int, const QString &)> done) {
    // A kext is a folder outside macOS, so the panel picks folders named *.kext.
    auto *panel = new QFileDialog(&m_delegate.window());
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setWindowModality(Qt::WindowModal);
    panel->setFileMode(QFileDialog::Directory);
    panel->setOption(QFileDialog::DontUseNativeDialog);
    panel->setNameFilter(tr("Kernel extensions (*.kext)"));
    connect(panel, &QFileDialog::finished, panel, [panel, done](int result) {
        const QString kext = panel->selectedFiles().value(0);
        const bool isKext = kext.endsWith(QLatin1String(".kext"));
        done(result == QDialog::Accepted && isKext ? 1 : 0, kext);
    });
    panel->open();
}

void CheckController::OpenKextToCheckPanelDidEnd(int returnCode, const QString &kext) {
    if (returnCode == 1)
        checkKext(kext);
}

void CheckController::checkKext(const QString &kext) {
    Ui::CheckPage *page = ui();
    page->circleChck->setVisible(true);
    page->kPath->setText(kext);
    const ArchitectureProbe probe(m_probe);
    const ArchitectureProbe::Architectures found =
        ArchitectureProbe::checkPageMarkers(probe.probeText(kext));
    page->kx86_64->setChecked(found.x86_64);
    page->ki386->setChecked(found.i386);
    page->kppc->setChecked(found.ppc);
    page->kppc64->setChecked(found.ppc64);
    page->kdep->setPlainText(QString());
    if (page->cbcheckdep->checkState() == Qt::Checked)
        BCheckDepen();
    page->circleChck->setVisible(false);
}

void CheckController::BCheckDepen() {
    Ui::CheckPage *page = ui();
    const QString kext = page->kPath->text();
    if (kext.isEmpty()) {
        showError(KextTestLoad::noKextMessage());
        return;
    }
    page->circleChck->setVisible(true);
    page->bCheckDep->setEnabled(false);
    page->bCheckSel->setEnabled(false);
    const SystemPaths paths = IconAlert::defaultinst().paths();
    QPointer guard(this);
    QThreadPool::globalInstance()->start([guard, paths, kext] {
        const QString listing = DependencyListing::run(paths, kext);
        // Widgets live on the UI thread: the text first, then the controls, in order.
        QMetaObject::invokeMethod(qApp, [guard, listing] {
            if (!guard)
                return;
            Ui::CheckPage *page = guard->ui();
            page->kdep->setPlainText(listing);
            page->bCheckDep->setEnabled(true);
            page->bCheckSel->setEnabled(true);
            page->circleChck->setVisible(false);
            emit guard->dependenciesShown();
        });
    });
}

void CheckController::bkextload() {
    IconAlert &icon = IconAlert::defaultinst();
    SessionExecutor session(AdminAuthentication::sharedInstance());
    Executor &executor = m_executor ? *m_executor : session;
    const KextTestLoad load(icon.paths(), executor, icon.index(),
                            [&icon](const QString &command, const QString &argument) {
                                return icon.ExecuteRootErrorCmd(command, argument);
                            });
    const KextTestLoad::Result result = load.run(ui()->kPath->text());
    if (result.outcome == KextTestLoad::Outcome::NoKext ||
        result.outcome == KextTestLoad::Outcome::Failed)
        showError(result.message);
}

void CheckController::onDrop(const QStringList &files) {
    const DroppedFile drop(files, m_delegate.window().currentPage());
    if (drop.action() == DroppedFile::Action::CheckKext)
        checkKext(drop.path());
}

#include "InstallController.h"

#include "InstallWindowView.h"
#include "MainWindow.h"
#include "MkextBuilderNotice.h"
#include "TovrelAppDelegate.h"
#include "exec/AdminAuthentication.h"
#include "exec/IconAlert.h"
#include "exec/SessionExecutor.h"
#include "install/InstallPlan.h"
#include "pages/InstallPage.h"
#include "ui_InstallPage.h"
#include "ui_MainWindow.h"

#include <QAbstractItemView>
#include <QFileDialog>
#include <QHeaderView>
#include <QPointer>
#include <QtConcurrent>
#include <memory>

InstallController::InstallController(TovrelAppDelegate &delegate)
    : QObject(&delegate), m_delegate(delegate),
      m_isRoot([](const QString &path) { return IconAlert::defaultinst().isRoot(path); }) {
    m_list.setBusyCheck([this] { return m_delegate.workingInst.load(); });
    auto *page = ui();
    page->tbkexts->setModel(&m_list);
    page->tbkexts->horizontalHeader()->setStretchLastSection(true);
    // Files come in from the file manager only; rows never leave by dragging.
    page->tbkexts->setDragDropMode(QAbstractItemView::DropOnly);
    page->tbkexts->setDefaultDropAction(Qt::CopyAction);
    connect(page->bInstBrowse, &QPushButton::clicked, this, &InstallController::Browse);
    connect(page->bInstClear, &QPushButton::clicked, this, &InstallController::bClear);
    connect(page->bInstButton, &QPushButton::clicked, this, &InstallController::bInst);
}

Ui::InstallPage *InstallController::ui() const {
    return m_delegate.installPage()->ui();
}

void InstallController::Browse() {
    auto done = [this](int returnCode, const QStringList &paths) {
        OpenKextToInstallPanelDidEnd(returnCode, paths);
    };
    if (m_panel)
        m_panel(done);
    else
        openPanel(done);
}

void InstallController::openPanel(std::function<void(int, const QStringList &)> done) {
    auto *dialog = new QFileDialog(&m_delegate.window());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    QStringList patterns;
    for (const QString &type : InstallList::bundleTypes())
        patterns << QStringLiteral("*.") + type;
    dialog->setNameFilter(tr("Kext bundles (%1)").arg(patterns.join(QLatin1Char(' '))));
#ifdef Q_OS_MACOS
    // Bundles are packages here: the native panel picks them like files.
    dialog->setFileMode(QFileDialog::ExistingFiles);
#else
    // Elsewhere a bundle is a plain folder. The dialog's own folder mode takes one
    // folder; letting its views select several makes it hand back all of them.
    dialog->setOption(QFileDialog::DontUseNativeDialog);
    dialog->setFileMode(QFileDialog::Directory);
    for (auto *view : dialog->findChildren<QAbstractItemView *>())
        view->setSelectionMode(QAbstractItemView::ExtendedSelection);
#endif
    connect(dialog, &QFileDialog::finished, this, [dialog, done](int result) {
        if (result != QDialog::Accepted) {
            done(0, {});
            return;
        }
        // Folder mode can't filter folders by name: keep the bundles, compared like the
        // panel's type list, which ignores case.
        QStringList chosen;
        for (const QString &path : dialog->selectedFiles()) {
            const QString name = InstallList::bundleName(path);
            const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
            if (dot > 0 &&
                InstallList::bundleTypes().contains(name.mid(dot + 1), Qt::CaseInsensitive))
                chosen << path;
        }
        done(1, chosen);
    });
    dialog->open();
}

void InstallController::OpenKextToInstallPanelDidEnd(int returnCode, const QStringList &paths) {
    if (returnCode != 1)
        return;
    for (const QString &path : paths)
        m_list.append({path});
}

void InstallController::bClear() {
    QList<int> rows;
    for (const QModelIndex &index : ui()->tbkexts->selectionModel()->selectedRows())
        rows << index.row();
    m_list.clear(rows);
    ui()->tbkexts->clearSelection();
}

void InstallController::bInst() {
    auto *page = ui();
    InstallOptions options;
    options.bundles = m_list.entries();
    options.volume = page->DiskSelInst->currentText();
    options.extraVersion = m_delegate.ExtraVer;
    options.toExtra = page->inExtra->isChecked();
    options.toSle = page->inSLE->isChecked();
    options.toDesktop = page->inDesktop->isChecked();
    options.backup = page->cbBackup->checkState() == Qt::Checked;
    options.prelinkKernel = m_delegate.window().ui()->MI_PrelinkKernel->isChecked();

    static SessionExecutor session(AdminAuthentication::sharedInstance());
    Executor &executor = m_executor ? *m_executor : session;
    auto view = std::make_shared<InstallWindowView>(m_delegate);
    auto plan = std::make_shared<InstallPlan>(options, m_delegate.paths(), executor, *view);
    plan->setIsRoot(m_isRoot);
    if (!plan->prepare())
        return;
    showMkextBuilderNotice(m_delegate.window(), m_delegate.paths());
    QPointer<InstallController> self(this);
    QThreadPool::globalInstance()->start([plan, view, self] {
        plan->run();
        if (self)
            QMetaObject::invokeMethod(
                self.data(), [self] { emit self->installationEnded(); }, Qt::QueuedConnection);
    });
}

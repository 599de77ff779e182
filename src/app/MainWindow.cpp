#include "MainWindow.h"

#include "ToolbarIcons.h"
#include "filesdrop.h"
#include "pages/CheckPage.h"
#include "pages/InstallPage.h"
#include "pages/LoadedPage.h"
#include "pages/MaintenancePage.h"
#include "pages/UnpackPage.h"
#include "ui_MainWindow.h"
#include "volumes/KextFolders.h"

#include <QActionGroup>
#include <QMessageBox>
#include <QStatusBar>
#include <QTabBar>
#include <QTimer>

namespace {
const char *const toolbarIds[] = {"ti_m", "ti_i", "ti_u", "ti_c", "ti_l"};
// The Go menu's entries of pages 0 to 3; the loaded kexts page has none.
const char *const menuIds[] = {"MI_MenuMain", "MI_MenuInst", "MI_MenuUnpck", "MI_MenuCheck"};
// Long enough to be read, short enough not to be taken for the state of things later.
constexpr int statusTimeout = 15000;
} // namespace

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent), m_ui(std::make_unique<Ui::MainWindow>()),
      m_maintenance(new MaintenancePage), m_install(new InstallPage), m_unpack(new UnpackPage),
      m_check(new CheckPage), m_loaded(new LoadedPage) {
    m_ui->setupUi(this);
    m_ui->TBV->addTab(m_maintenance, tr("Maintenance"));
    m_ui->TBV->addTab(m_install, tr("Installation"));
    m_ui->TBV->addTab(m_unpack, tr("Unpacking"));
    m_ui->TBV->addTab(m_check, tr("Checking"));
    m_ui->TBV->addTab(m_loaded, tr("Loaded Kexts"));
    // Pages are switched by the toolbar and the menu only.
    m_ui->TBV->tabBar()->hide();

    m_toolbarGroup = new QActionGroup(this);
    m_toolbarGroup->setExclusive(true);
    for (const char *id : toolbarIds) {
        m_toolbarGroup->addAction(action(QLatin1String(id)));
        m_toolTips << action(QLatin1String(id))->toolTip();
    }
    statusBar()->setSizeGripEnabled(false);

    m_verSpacer = m_ui->menuVersion->insertSeparator(m_ui->MI_Ver104);
    m_verSpacer->setObjectName(QStringLiteral("MI_VerSpacer"));
    m_spacer = m_ui->menuHelp->insertSeparator(m_ui->MI_Donate);
    m_spacer->setObjectName(QStringLiteral("MI_Spacer"));
    connect(m_ui->MI_Quit, &QAction::triggered, this, &QWidget::close);
    connect(m_ui->MI_About, &QAction::triggered, this, [this] {
        QMessageBox::about(this, tr("About KextKeeper"),
                           tr("KextKeeper %1\nInstalls, repairs and inspects kernel extensions "
                              "for a boot loader's Extra folder.\n\nFree software under the GNU "
                              "General Public License, version 3 or (at your option) any later "
                              "version (GPL-3.0-or-later).")
                               .arg(QStringLiteral(KK_VERSION)));
    });

    ToolbarIcons::applyShipped(*this);
    m_ui->ti_m->setChecked(true);
    m_ui->MI_VerIndpd->setChecked(true);
}

MainWindow::~MainWindow() = default;

filesdrop *MainWindow::dropTarget() const {
    return m_ui->dropView;
}

QAction *MainWindow::action(const QString &name) const {
    return findChild<QAction *>(name);
}

int MainWindow::currentPage() const {
    return m_ui->TBV->currentIndex();
}

void MainWindow::showPage(int index) {
    m_ui->TBV->setCurrentIndex(index);
}

QString MainWindow::selectedToolbarItem() const {
    QAction *checked = m_toolbarGroup->checkedAction();
    return checked ? checked->objectName() : QString();
}

void MainWindow::selectToolbarItem(const QString &identifier) {
    if (QAction *item = action(identifier))
        item->setChecked(true);
}

QString MainWindow::toolbarIdentifier(int page) {
    if (page < 0 || page >= int(std::size(toolbarIds)))
        return {};
    return QLatin1String(toolbarIds[page]);
}

QToolBar *MainWindow::pageToolBar() const {
    return m_ui->ToolBar;
}

bool MainWindow::prelinkKernel() const {
    return m_ui->MI_PrelinkKernel->isChecked();
}

void MainWindow::setPrelinkKernel(bool checked) {
    m_ui->MI_PrelinkKernel->setChecked(checked);
}

void MainWindow::setCheckAtStartup(bool checked) {
    m_ui->MI_checkatstart->setChecked(checked);
}

void MainWindow::hideDonation() {
    m_ui->MI_Donate->setVisible(false);
    m_spacer->setVisible(false);
}

void MainWindow::setExtraMenuEnabled(bool enabled) {
    m_ui->MI_HideExtra->setEnabled(enabled);
    m_ui->MI_ShowExtra->setEnabled(enabled);
}

QList<QAction *> MainWindow::versionItems() const {
    return {m_ui->MI_VerIndpd, m_ui->MI_Ver104, m_ui->MI_Ver105, m_ui->MI_Ver106, m_ui->MI_Ver107};
}

void MainWindow::showVersionFolders(const QList<bool> &present) {
    const QList<QAction *> items = versionItems().mid(1);
    m_ui->MI_VerIndpd->setChecked(true);
    for (QAction *item : items) {
        item->setVisible(false);
        item->setChecked(false);
    }
    m_verSpacer->setVisible(false);
    for (int i = 0; i < items.size() && i < present.size(); ++i) {
        if (present.at(i)) {
            m_verSpacer->setVisible(true);
            items.at(i)->setVisible(true);
        }
    }
}

QString MainWindow::markVersion(QAction *item) {
    const QList<QAction *> items = versionItems().mid(1);
    m_ui->MI_VerIndpd->setChecked(false);
    for (QAction *version : items)
        version->setChecked(false);
    const int match = KextFolders::versions().indexOf(item ? item->text() : QString());
    if (match < 0) {
        m_ui->MI_VerIndpd->setChecked(true);
        return QString();
    }
    items.at(match)->setChecked(true);
    return KextFolders::versions().at(match);
}

void MainWindow::showStatus(const QString &text) {
    statusBar()->showMessage(text, statusTimeout);
}

QString MainWindow::statusText() const {
    return statusBar()->currentMessage();
}

void MainWindow::setPageBlocked(int page, const QString &reason) {
    QAction *item = action(toolbarIdentifier(page));
    if (!item)
        return;
    const bool blocked = !reason.isEmpty();
    item->setEnabled(!blocked);
    item->setToolTip(blocked ? reason : m_toolTips.value(page));
    if (page < int(std::size(menuIds))) {
        QAction *entry = action(QLatin1String(menuIds[page]));
        entry->setEnabled(!blocked);
        entry->setToolTip(blocked ? reason : QString());
    }
}

bool MainWindow::event(QEvent *event) {
    const bool handled = QMainWindow::event(event);
    if (m_firstFrameReported)
        return handled;
    if (event->type() == QEvent::Paint) {
        // Queued: the frame reaches the screen when this paint has returned.
        QMetaObject::invokeMethod(this, &MainWindow::reportFirstFrame, Qt::QueuedConnection);
    } else if (event->type() == QEvent::Show) {
        QTimer::singleShot(1000, this, &MainWindow::reportFirstFrame);
    }
    return handled;
}

void MainWindow::reportFirstFrame() {
    if (m_firstFrameReported)
        return;
    m_firstFrameReported = true;
    emit firstFrameShown();
}

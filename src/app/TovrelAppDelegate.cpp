#include "TovrelAppDelegate.h"

#include "AppSettings.h"
#include "DonationProbe.h"
#include "MainWindow.h"
#include "OptionGroup.h"
#include "SystemImages.h"
#include "ToolbarCustomizeDialog.h"
#include "ToolbarIcons.h"
#include "UpdateCheck.h"
#include "VolumeTables.h"
#include "exec/IconAlert.h"
#include "pages/CheckPage.h"
#include "pages/InstallPage.h"
#include "pages/MaintenancePage.h"
#include "pages/UnpackPage.h"
#include "ui_CheckPage.h"
#include "ui_InstallPage.h"
#include "ui_MainWindow.h"
#include "ui_MaintenancePage.h"
#include "ui_UnpackPage.h"
#include "volumes/KextFolderLayout.h"
#include "volumes/VolumeList.h"

#include <QDesktopServices>
#include <QUrl>

TovrelAppDelegate::TovrelAppDelegate(MainWindow &window, const SystemPaths &paths, QObject *parent)
    : QObject(parent), m_window(window), m_paths(paths),
      m_settings(std::make_unique<AppSettings>(paths.contentsDir())),
      m_tables(std::make_unique<VolumeTables>(window)),
      m_isRoot([](const QString &path) { return IconAlert::defaultinst().isRoot(path); }) {
    auto *main = maintenancePage()->ui();
    m_extraGroup = std::make_unique<OptionGroup>(main->cbExtra, main->cbERP, main->cbERM);
    m_sleGroup = std::make_unique<OptionGroup>(main->cbSLE, main->cbSLERP, main->cbSLERC);
    connectActions();
}

TovrelAppDelegate::~TovrelAppDelegate() = default;

MaintenancePage *TovrelAppDelegate::maintenancePage() const {
    return m_window.maintenancePage();
}

InstallPage *TovrelAppDelegate::installPage() const {
    return m_window.installPage();
}

UnpackPage *TovrelAppDelegate::unpackPage() const {
    return m_window.unpackPage();
}

CheckPage *TovrelAppDelegate::checkPage() const {
    return m_window.checkPage();
}

void TovrelAppDelegate::connectActions() {
    auto *menu = m_window.ui();
    connect(menu->ti_m, &QAction::triggered, this, &TovrelAppDelegate::TBIMain);
    connect(menu->ti_i, &QAction::triggered, this, &TovrelAppDelegate::TBInstall);
    connect(menu->ti_u, &QAction::triggered, this, &TovrelAppDelegate::TBIUnpack);
    connect(menu->ti_c, &QAction::triggered, this, &TovrelAppDelegate::TBICheck);
    connect(menu->MI_MenuMain, &QAction::triggered, this, &TovrelAppDelegate::MenuMain);
    connect(menu->MI_MenuInst, &QAction::triggered, this, &TovrelAppDelegate::MenuInst);
    connect(menu->MI_MenuUnpck, &QAction::triggered, this, &TovrelAppDelegate::MenuUnpck);
    connect(menu->MI_MenuCheck, &QAction::triggered, this, &TovrelAppDelegate::MenuCheck);
    connect(menu->MI_TBCust, &QAction::triggered, this, &TovrelAppDelegate::TBCust);
    connect(menu->MI_checkatstart, &QAction::triggered, this,
            &TovrelAppDelegate::CheckForUpdatesAtStartup);
    connect(menu->MI_PrelinkKernel, &QAction::triggered, this, &TovrelAppDelegate::PrelinkKernel);
    connect(menu->MI_Donate, &QAction::triggered, this, &TovrelAppDelegate::Donate);
    for (QAction *version :
         {menu->MI_VerIndpd, menu->MI_Ver104, menu->MI_Ver105, menu->MI_Ver106, menu->MI_Ver107})
        connect(version, &QAction::triggered, this, [this, version] { CheckVer(version); });

    auto *main = maintenancePage()->ui();
    connect(main->cbExtra, &QCheckBox::clicked, this, &TovrelAppDelegate::cbExtraC);
    connect(main->cbSLE, &QCheckBox::clicked, this, &TovrelAppDelegate::cbSLEC);
    connect(main->cbERP, &QCheckBox::clicked, this, &TovrelAppDelegate::cbMixExtra);
    connect(main->cbERM, &QCheckBox::clicked, this, &TovrelAppDelegate::cbMixExtra);
    connect(main->cbSLERP, &QCheckBox::clicked, this, &TovrelAppDelegate::cbMixSLE);
    connect(main->cbSLERC, &QCheckBox::clicked, this, &TovrelAppDelegate::cbMixSLE);
    connect(main->DiskSelMain, &QComboBox::activated, this,
            [this, main] { DiskSelectorMaintenance(main->DiskSelMain); });

    auto *inst = installPage()->ui();
    connect(inst->DiskSelInst, &QComboBox::activated, this,
            [this, inst] { DiskSelectorInstallation(inst->DiskSelInst); });
    connect(inst->inExtra, &QRadioButton::clicked, this, [this, inst] {
        selectDestination(inst->inExtra);
        EEnableDiskSel();
    });
    connect(inst->inSLE, &QRadioButton::clicked, this, [this, inst] {
        selectDestination(inst->inSLE);
        SLEEnableDiskSel();
    });
    connect(inst->inDesktop, &QRadioButton::clicked, this, [this, inst] {
        selectDestination(inst->inDesktop);
        MkextDisableDiskSel();
    });

    connect(m_window.dropTarget(), &filesdrop::dropped, this, &TovrelAppDelegate::filesDragged);
}

// --- Page switching -------------------------------------------------------------------
// A toolbar click has already moved the toolbar's selection; a refused one must put it
// back. A menu entry moves both the page and the selection.

void TovrelAppDelegate::TBIMain() {
    if (workingInst)
        putToolbarSelectionBack();
    else
        m_window.showPage(PageMaintenance);
}

void TovrelAppDelegate::TBInstall() {
    if (workingMain)
        putToolbarSelectionBack();
    else
        m_window.showPage(PageInstallation);
}

void TovrelAppDelegate::TBIUnpack() {
    if (workingInst || workingMain)
        putToolbarSelectionBack();
    else
        m_window.showPage(PageUnpacking);
}

void TovrelAppDelegate::TBICheck() {
    m_window.showPage(PageChecking);
}

void TovrelAppDelegate::MenuMain() {
    if (workingInst)
        return;
    m_window.showPage(PageMaintenance);
    m_window.selectToolbarItem(QStringLiteral("ti_m"));
}

void TovrelAppDelegate::MenuInst() {
    if (workingMain)
        return;
    m_window.showPage(PageInstallation);
    m_window.selectToolbarItem(QStringLiteral("ti_i"));
}

void TovrelAppDelegate::MenuUnpck() {
    if (workingInst || workingMain)
        return;
    m_window.showPage(PageUnpacking);
    m_window.selectToolbarItem(QStringLiteral("ti_u"));
}

void TovrelAppDelegate::MenuCheck() {
    m_window.showPage(PageChecking);
    m_window.selectToolbarItem(QStringLiteral("ti_c"));
}

void TovrelAppDelegate::TBCust() {
    // Only the maintenance job is guarded here: the dialog may open during an install.
    if (workingMain)
        return;
    auto *dialog = new ToolbarCustomizeDialog(m_window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
}

void TovrelAppDelegate::putToolbarSelectionBack() {
    const QString id = MainWindow::toolbarIdentifier(m_window.currentPage());
    if (!id.isEmpty())
        m_window.selectToolbarItem(id);
}

// --- Option groups and destinations ---------------------------------------------------

void TovrelAppDelegate::cbExtraC() {
    m_extraGroup->parentClicked();
}

void TovrelAppDelegate::cbSLEC() {
    m_sleGroup->parentClicked();
}

void TovrelAppDelegate::cbMixExtra() {
    m_extraGroup->childClicked();
    // A mkext rebuild the volume can't have is cleared; the parent keeps what the
    // children said before, so it may still show the rebuild as wanted.
    QCheckBox *rebuild = maintenancePage()->ui()->cbERM;
    if (rebuild->checkState() == Qt::Checked && !rebuild->isEnabled())
        rebuild->setCheckState(Qt::Unchecked);
}

void TovrelAppDelegate::cbMixSLE() {
    m_sleGroup->childClicked();
}

void TovrelAppDelegate::EEnableDiskSel() {
    installPage()->ui()->DiskSelInst->setEnabled(true);
}

void TovrelAppDelegate::SLEEnableDiskSel() {
    installPage()->ui()->DiskSelInst->setEnabled(true);
}

void TovrelAppDelegate::MkextDisableDiskSel() {
    installPage()->ui()->DiskSelInst->setEnabled(false);
}

void TovrelAppDelegate::selectDestination(QObject *chosen) {
    // The three choices form one group, but the group may also have none selected (a
    // volume without S/L/E and Extra), so exclusivity is kept here.
    auto *inst = installPage()->ui();
    for (QRadioButton *choice : {inst->inExtra, inst->inSLE, inst->inDesktop})
        choice->setChecked(choice == chosen);
}

// --- Volumes ----------------------------------------------------------------------------

void TovrelAppDelegate::DiskSelectorMaintenance(QObject *sender) {
    auto *main = maintenancePage()->ui();
    auto *inst = installPage()->ui();
    rp = m_paths.volumeRoot(main->DiskSelMain->currentText());
    inst->DiskSelInst->setCurrentIndex(
        inst->DiskSelInst->findText(main->DiskSelMain->currentText()));
    inst->DiskSelInst->setEnabled(true);
    applyVolumeTables(sender);
}

void TovrelAppDelegate::DiskSelectorInstallation(QObject *sender) {
    auto *main = maintenancePage()->ui();
    auto *inst = installPage()->ui();
    rp = m_paths.volumeRoot(inst->DiskSelInst->currentText());
    // The maintenance popup follows, but stays as disabled as a running job left it.
    main->DiskSelMain->setCurrentIndex(
        main->DiskSelMain->findText(inst->DiskSelInst->currentText()));
    applyVolumeTables(sender);
}

void TovrelAppDelegate::applyVolumeTables(QObject *sender) {
    m_tables->applySle(KextFolderLayout::slePresent(rp));
    m_tables->applyExtra(KextFolderLayout::extraPresent(rp, ExtraVer));
    if (sender)
        m_tables->applyVersions(KextFolderLayout::versionFolders(rp));
}

void TovrelAppDelegate::CheckVer(QAction *item) {
    auto *menu = m_window.ui();
    QAction *const versionItems[] = {menu->MI_Ver104, menu->MI_Ver105, menu->MI_Ver106,
                                     menu->MI_Ver107};
    menu->MI_VerIndpd->setChecked(false);
    for (QAction *version : versionItems)
        version->setChecked(false);
    const QString title = item ? item->text() : QString();
    const int match = KextFolderLayout::versions().indexOf(title);
    if (match >= 0) {
        versionItems[match]->setChecked(true);
        ExtraVer = title;
    } else {
        menu->MI_VerIndpd->setChecked(true);
        ExtraVer.clear();
    }
    DiskSelectorMaintenance(nullptr);
}

void TovrelAppDelegate::fillVolumeLists() {
    auto *main = maintenancePage()->ui();
    auto *inst = installPage()->ui();
    const QString volumesDir = m_paths.volumesDir();
    const QStringList volumes = VolumeList::build(volumesDir);
    inst->DiskSelInst->clear();
    inst->DiskSelInst->addItems(volumes);
    main->DiskSelMain->clear();
    main->DiskSelMain->addItems(volumes);
    const int started = VolumeList::preselection(volumes, volumesDir, m_isRoot);
    if (started >= 0) {
        main->DiskSelMain->setCurrentIndex(started);
        inst->DiskSelInst->setCurrentIndex(started);
    }
}

// --- Drops ------------------------------------------------------------------------------

void TovrelAppDelegate::filesDragged(const QStringList &files) {
    emit filesDropped(files);
}

// --- Start-up and settings --------------------------------------------------------------

void TovrelAppDelegate::applicationDidFinishLaunching() {
    // The notification service was given to IconAlert when the window was built.
    unpackPage()->ui()->MKUnPath->setText(m_paths.home() +
                                          QStringLiteral("/Desktop/Mkext Contents"));
    auto *arch = unpackPage()->ui()->MkArch;
    arch->clear();
    arch->addItems({QStringLiteral("x86_64"), QStringLiteral("i386"), QStringLiteral("ppc"),
                    QStringLiteral("ppc64")});
    checkPage()->ui()->kdep->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_window.selectToolbarItem(QStringLiteral("ti_m"));
    installPage()->ui()->InstProgress->setRange(0, 100);
    ToolbarIcons::applySystem(m_window, SystemImages(m_paths));
    fillVolumeLists();
    DiskSelectorMaintenance(nullptr);
    // The version menu starts as a volume choice leaves it: only the shown volume's
    // version folders have items.
    m_tables->applyVersions(KextFolderLayout::versionFolders(rp));

    auto *menu = m_window.ui();
    if (m_settings->boolean(AppSettings::checkAtStartupKey)) {
        menu->MI_checkatstart->setChecked(true);
        auto *check = new UpdateCheck(this);
        connect(check, &UpdateCheck::newVersionAvailable, this,
                [this](const QString &version, const QUrl &download) {
                    IconAlert::defaultinst().ShowInfoMsg(
                        tr("KextKeeper %1 is available. You can download it from %2")
                            .arg(version, download.toString()),
                        &m_window);
                });
        connect(check, &UpdateCheck::finished, check, &QObject::deleteLater);
        check->start(QUrl(m_settings->string(AppSettings::feedUrlKey)), QStringLiteral(KK_VERSION));
    } else {
        menu->MI_checkatstart->setChecked(false);
        auto *probe = new DonationProbe(this);
        connect(probe, &DonationProbe::unreachable, this, [this, probe] {
            m_window.ui()->MI_Donate->setVisible(false);
            m_window.donateSpacer()->setVisible(false);
            probe->deleteLater();
        });
        connect(probe, &DonationProbe::reachable, probe, &QObject::deleteLater);
        probe->start(QUrl(m_settings->string(AppSettings::donationUrlKey)));
    }
    menu->MI_PrelinkKernel->setChecked(m_settings->boolean(AppSettings::prelinkKernelKey));
}

void TovrelAppDelegate::CheckForUpdatesAtStartup(bool checked) {
    // The check mark is what counts now; a settings file we can't write is ignored.
    m_settings->store(AppSettings::checkAtStartupKey, checked);
}

void TovrelAppDelegate::PrelinkKernel(bool checked) {
    m_settings->store(AppSettings::prelinkKernelKey, checked);
}

void TovrelAppDelegate::Donate() {
    QDesktopServices::openUrl(QUrl(m_settings->string(AppSettings::donationUrlKey)));
}

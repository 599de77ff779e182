#include "TovrelAppDelegate.h"

#include "AppSettings.h"
#include "DonationProbe.h"
#include "MainWindow.h"
#include "SandboxOffer.h"
#include "SystemImages.h"
#include "ToolbarCustomizeDialog.h"
#include "ToolbarIcons.h"
#include "UpdateCheck.h"
#include "exec/AppServices.h"
#include "filesdrop.h"
#include "pages/CheckPage.h"
#include "pages/InstallPage.h"
#include "pages/MaintenancePage.h"
#include "pages/UnpackPage.h"
#include "volumes/KextFolders.h"
#include "volumes/VolumeList.h"

#include <QAction>
#include <QDesktopServices>
#include <QDir>
#include <QUrl>

TovrelAppDelegate::TovrelAppDelegate(MainWindow &window, AppServices &services, QObject *parent)
    : QObject(parent), m_window(window), m_services(services), m_paths(services.paths()),
      m_settings(std::make_unique<AppSettings>(m_paths.contentsDir())) {
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
    const auto on = [this](const char *name, void (TovrelAppDelegate::*handler)()) {
        connect(m_window.action(QLatin1String(name)), &QAction::triggered, this, handler);
    };
    on("ti_m", &TovrelAppDelegate::TBIMain);
    on("ti_i", &TovrelAppDelegate::TBInstall);
    on("ti_u", &TovrelAppDelegate::TBIUnpack);
    on("ti_c", &TovrelAppDelegate::TBICheck);
    on("MI_MenuMain", &TovrelAppDelegate::MenuMain);
    on("MI_MenuInst", &TovrelAppDelegate::MenuInst);
    on("MI_MenuUnpck", &TovrelAppDelegate::MenuUnpck);
    on("MI_MenuCheck", &TovrelAppDelegate::MenuCheck);
    on("MI_TBCust", &TovrelAppDelegate::TBCust);
    on("MI_Donate", &TovrelAppDelegate::Donate);
    connect(m_window.action(QStringLiteral("MI_checkatstart")), &QAction::triggered, this,
            &TovrelAppDelegate::CheckForUpdatesAtStartup);
    connect(m_window.action(QStringLiteral("MI_PrelinkKernel")), &QAction::triggered, this,
            &TovrelAppDelegate::PrelinkKernel);
    for (QAction *version : m_window.versionItems())
        connect(version, &QAction::triggered, this, [this, version] { CheckVer(version); });

    connect(maintenancePage(), &MaintenancePage::volumeChosen, this,
            [this] { DiskSelectorMaintenance(maintenancePage()); });
    connect(installPage(), &InstallPage::volumeChosen, this,
            [this] { DiskSelectorInstallation(installPage()); });
    connect(m_window.dropTarget(), &filesdrop::dropped, this, &TovrelAppDelegate::filesDragged);
    connect(maintenancePage(), &MaintenancePage::offerClicked, this,
            [this] { SandboxOffer(m_paths.home()).acceptFrom(m_window); });
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

void TovrelAppDelegate::updatePageGuards() {
    const QString whileMaintenance = tr("%1 is blocked while maintenance runs");
    const QString whileInstallation = tr("%1 is blocked while an installation runs");
    const auto reason = [&](const QString &page, bool byMaintenance, bool byInstallation) {
        if (byMaintenance && workingMain)
            return whileMaintenance.arg(page);
        if (byInstallation && workingInst)
            return whileInstallation.arg(page);
        return QString();
    };
    const QString maintenance = reason(tr("Maintenance"), false, true);
    const QString installation = reason(tr("Installation"), true, false);
    m_window.setPageBlocked(PageMaintenance, maintenance);
    m_window.setPageBlocked(PageInstallation, installation);
    m_window.setPageBlocked(PageUnpacking, reason(tr("Unpacking"), true, true));
    // The status line names the page the running task is the counterpart of.
    const QString hint = !installation.isEmpty() ? installation : maintenance;
    // A hint that is over goes, but no other word the status line shows meanwhile.
    if (!hint.isEmpty())
        m_window.showStatus(hint);
    else if (m_window.statusText() == m_guardHint)
        m_window.showStatus(QString());
    m_guardHint = hint;
}

// --- Volumes ----------------------------------------------------------------------------

void TovrelAppDelegate::DiskSelectorMaintenance(QObject *sender) {
    const QString volume = maintenancePage()->volume();
    rp = m_paths.volumeRoot(volume);
    installPage()->selectVolume(volume);
    installPage()->setVolumeChoiceEnabled(true);
    applyVolumeTables(sender);
}

void TovrelAppDelegate::DiskSelectorInstallation(QObject *sender) {
    const QString volume = installPage()->volume();
    rp = m_paths.volumeRoot(volume);
    // The maintenance popup follows, but stays as disabled as a running job left it.
    maintenancePage()->selectVolume(volume);
    applyVolumeTables(sender);
}

void TovrelAppDelegate::applyVolumeTables(QObject *sender) {
    // Boxes are only ever switched off or enabled here, never ticked: what the user ticked
    // stays ticked while it applies.
    const KextFolders folders(rp, ExtraVer);
    const bool sle = folders.slePresent();
    maintenancePage()->setSleAvailable(sle);
    installPage()->setSleAvailable(sle);
    const bool extra = folders.extraPresent();
    maintenancePage()->setExtraAvailable(extra);
    installPage()->setExtraAvailable(extra);
    m_window.setExtraMenuEnabled(extra);
    if (sender)
        m_window.showVersionFolders(folders.versionFolders());
}

void TovrelAppDelegate::CheckVer(QAction *item) {
    ExtraVer = m_window.markVersion(item);
    DiskSelectorMaintenance(nullptr);
}

void TovrelAppDelegate::fillVolumeLists() {
    const QString volumesDir = m_paths.volumesDir();
    const QStringList volumes = VolumeList::build(volumesDir);
    const int started = VolumeList::preselection(volumes, volumesDir, [this](const QString &path) {
        return m_services.iconAlert().isRoot(path);
    });
    installPage()->setVolumes(volumes, started);
    maintenancePage()->setVolumes(volumes, started);
    const SandboxOffer sandbox(m_paths.home());
    maintenancePage()->showEmptyState(
        volumes.isEmpty() ? tr("No volume with an Extra or System/Library folder was found in %1.")
                                .arg(QDir::toNativeSeparators(volumesDir))
                          : QString(),
        SandboxOffer::applies(m_paths) ? sandbox.actionText() : QString());
}

// --- Drops ------------------------------------------------------------------------------

void TovrelAppDelegate::filesDragged(const QStringList &files) {
    emit filesDropped(files);
}

// --- Start-up and settings --------------------------------------------------------------

void TovrelAppDelegate::applicationDidFinishLaunching() {
    // The notification service was given to the services when the window was built.
    unpackPage()->setFolder(m_paths.home() + QStringLiteral("/Desktop/Mkext Contents"));
    unpackPage()->setArchitectures({QStringLiteral("x86_64"), QStringLiteral("i386"),
                                    QStringLiteral("ppc"), QStringLiteral("ppc64")});
    m_window.selectToolbarItem(QStringLiteral("ti_m"));
    installPage()->setProgressMaximum(100);
    ToolbarIcons::applySystem(m_window, SystemImages(m_paths));
    fillVolumeLists();
    DiskSelectorMaintenance(nullptr);
    // The version menu starts as a volume choice leaves it: only the shown volume's
    // version folders have items.
    m_window.showVersionFolders(KextFolders(rp).versionFolders());

    const bool checkForUpdates = m_settings->boolean(AppSettings::checkAtStartupKey);
    m_window.setCheckAtStartup(checkForUpdates);
    if (checkForUpdates) {
        auto *check = new UpdateCheck(this);
        connect(check, &UpdateCheck::newVersionAvailable, this,
                [this](const QString &version, const QUrl &download) {
                    m_services.iconAlert().ShowInfoMsg(
                        tr("KextKeeper %1 is available. You can download it from %2")
                            .arg(version, download.toString()),
                        &m_window);
                });
        connect(check, &UpdateCheck::finished, check, &QObject::deleteLater);
        check->start(QUrl(m_settings->string(AppSettings::feedUrlKey)), QStringLiteral(KK_VERSION));
    } else {
        auto *probe = new DonationProbe(this);
        connect(probe, &DonationProbe::unreachable, this, [this, probe] {
            m_window.hideDonation();
            probe->deleteLater();
        });
        connect(probe, &DonationProbe::reachable, probe, &QObject::deleteLater);
        probe->start(QUrl(m_settings->string(AppSettings::donationUrlKey)));
    }
    m_window.setPrelinkKernel(m_settings->boolean(AppSettings::prelinkKernelKey));
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

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
#include <QtConcurrent>

TovrelAppDelegate::TovrelAppDelegate(MainWindow &window, AppServices &services, QObject *parent)
    : QObject(parent), m_window(window), m_services(services), m_paths(services.paths()),
      m_settings(std::make_unique<AppSettings>(m_paths.contentsDir())) {
    connectActions();
}

TovrelAppDelegate::~TovrelAppDelegate() {
    // The volume job reads the services; the network objects end with their thread.
    m_volumeList.waitForFinished();
    m_network.quit();
    m_network.wait();
}

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

BackupRestore::Plan TovrelAppDelegate::restorePlan(const BackupRestore::Backup &backup) const {
    BackupRestore::Plan plan = BackupRestore::plan(backup, m_paths, m_window.prelinkKernel());
    plan.options.recreateLionCache = m_settings->boolean(AppSettings::lionCacheKey);
    return plan;
}

TovrelAppDelegate::VolumeChoice TovrelAppDelegate::listVolumes(const SystemPaths &paths,
                                                               const AppServices &services) {
    VolumeChoice choice;
    const QString volumesDir = paths.volumesDir();
    choice.volumes = VolumeList::build(volumesDir);
    choice.started =
        VolumeList::preselection(choice.volumes, volumesDir, [&services](const QString &path) {
            return services.isStartedSystem(path);
        });
    return choice;
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
    // Which volume is the started system is the disk tool's answer, one run per volume.
    m_volumeList =
        QtConcurrent::run(&TovrelAppDelegate::listVolumes, m_paths, std::cref(m_services));
    m_volumeList.then(this, [this](const VolumeChoice &choice) { finishLaunching(choice); });
}

void TovrelAppDelegate::finishLaunching(const VolumeChoice &choice) {
    installPage()->setVolumes(choice.volumes, choice.started);
    maintenancePage()->setVolumes(choice.volumes, choice.started);
    const SandboxOffer sandbox(m_paths.home());
    maintenancePage()->showEmptyState(
        choice.volumes.isEmpty()
            ? tr("No volume with an Extra or System/Library folder was found in %1.")
                  .arg(QDir::toNativeSeparators(m_paths.volumesDir()))
            : QString(),
        SandboxOffer::applies(m_paths) ? sandbox.actionText() : QString());
    DiskSelectorMaintenance(nullptr);
    // The version menu starts as a volume choice leaves it: only the shown volume's
    // version folders have items.
    m_window.showVersionFolders(KextFolders(rp).versionFolders());
    startNetworkCheck();
    m_window.setPrelinkKernel(m_settings->boolean(AppSettings::prelinkKernelKey));
    emit launched();
}

void TovrelAppDelegate::startNetworkCheck() {
    const bool checkForUpdates = m_settings->boolean(AppSettings::checkAtStartupKey);
    m_window.setCheckAtStartup(checkForUpdates);
    m_network.start();
    if (checkForUpdates) {
        auto *check = new UpdateCheck;
        check->moveToThread(&m_network);
        connect(&m_network, &QThread::finished, check, &QObject::deleteLater);
        connect(check, &UpdateCheck::newVersionAvailable, this,
                [this](const QString &version, const QUrl &download) {
                    m_services.iconAlert().ShowInfoMsg(
                        tr("KextKeeper %1 is available. You can download it from %2")
                            .arg(version, download.toString()),
                        &m_window);
                });
        connect(check, &UpdateCheck::finished, this, &TovrelAppDelegate::networkCheckEnded);
        connect(check, &UpdateCheck::finished, check, &QObject::deleteLater);
        const QUrl feed(m_settings->string(AppSettings::feedUrlKey));
        QMetaObject::invokeMethod(
            check, [check, feed] { check->start(feed, QStringLiteral(KK_VERSION)); });
    } else {
        auto *probe = new DonationProbe;
        probe->moveToThread(&m_network);
        connect(&m_network, &QThread::finished, probe, &QObject::deleteLater);
        connect(probe, &DonationProbe::unreachable, this, [this] {
            m_window.hideDonation();
            emit networkCheckEnded();
        });
        connect(probe, &DonationProbe::reachable, this, &TovrelAppDelegate::networkCheckEnded);
        connect(probe, &DonationProbe::unreachable, probe, &QObject::deleteLater);
        connect(probe, &DonationProbe::reachable, probe, &QObject::deleteLater);
        const QUrl page(m_settings->string(AppSettings::donationUrlKey));
        QMetaObject::invokeMethod(probe, [probe, page] { probe->start(page); });
    }
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

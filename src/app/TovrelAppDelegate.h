#pragma once

#include "install/BackupRestore.h"
#include "volumes/SystemPaths.h"

#include <QFuture>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QThread>
#include <atomic>
#include <functional>
#include <memory>

class AppServices;
class AppSettings;
class CheckPage;
class InstallPage;
class MainWindow;
class MaintenancePage;
class QAction;
class UnpackPage;

// Coordinates pages 0 to 3 and holds the process-wide task state: page switching and its
// guards, the volume both pages work on and what it holds, the version folder, drops and
// the settings. Feature controllers (maintenance, installation, checking, unpacking) are
// QObjects made with a reference to this object; they talk to the pages through their
// intent and read and set the state below.
class TovrelAppDelegate : public QObject {
    Q_OBJECT
public:
    TovrelAppDelegate(MainWindow &window, AppServices &services, QObject *parent = nullptr);
    ~TovrelAppDelegate() override;

    // The target volume's root path: volumes folder + "/" + title, set by the selectors.
    QString rp = QStringLiteral("/");
    // The version folder below Extra ("10.4" .. "10.7") or empty.
    QString ExtraVer;
    // Set while the maintenance or the installation job runs (page guards read them).
    std::atomic<bool> workingMain{false};
    std::atomic<bool> workingInst{false};
    // The backup folder of the installation running now.
    QString datedir;

    MainWindow &window() const { return m_window; }
    MaintenancePage *maintenancePage() const;
    InstallPage *installPage() const;
    UnpackPage *unpackPage() const;
    CheckPage *checkPage() const;
    const SystemPaths &paths() const { return m_paths; }
    AppSettings &settings() const { return *m_settings; }
    // Putting a backup back, with the kernel and cache choices the window has now.
    BackupRestore::Plan restorePlan(const BackupRestore::Backup &backup) const;

    // Gives every control its start-up content, in order, and starts the update check
    // or the donation probe. Nothing slow runs on the UI thread: the volume list asks the
    // disk tool about each volume on the pool, the steps after it continue here once it
    // is known (then `launched` is emitted), and the network is used from a thread of
    // its own.
    void applicationDidFinishLaunching();

public slots:
    void TBIMain();
    void TBInstall();
    void TBIUnpack();
    void TBICheck();
    void MenuMain();
    void MenuInst();
    void MenuUnpck();
    void MenuCheck();
    void TBCust();

    // A null sender re-evaluates the option boxes only; a popup's own choice also
    // rebuilds the version menu.
    void DiskSelectorMaintenance(QObject *sender);
    void DiskSelectorInstallation(QObject *sender);
    void CheckVer(QAction *item);

    void filesDragged(const QStringList &files);

    void CheckForUpdatesAtStartup(bool checked);
    void PrelinkKernel(bool checked);
    void Donate();

    // Selects the toolbar item of the page shown now (after a refused toolbar click).
    void putToolbarSelectionBack();
    // Shows the pages the running tasks keep the user out of as off, and says why; called
    // whenever a busy flag changes.
    void updatePageGuards();

signals:
    void filesDropped(const QStringList &files);
    // Every start-up step has run (the update check or donation probe has started).
    void launched();
    // The update check or the donation probe has its answer, and the window shows it.
    void networkCheckEnded();

private:
    struct VolumeChoice {
        QStringList volumes;
        int started = -1;
    };
    void connectActions();
    static VolumeChoice listVolumes(const SystemPaths &paths, const AppServices &services);
    void finishLaunching(const VolumeChoice &choice);
    void startNetworkCheck();
    void applyVolumeTables(QObject *sender);

    MainWindow &m_window;
    AppServices &m_services;
    SystemPaths m_paths;
    std::unique_ptr<AppSettings> m_settings;
    QString m_guardHint;
    QFuture<VolumeChoice> m_volumeList;
    // The update check and the donation probe live here: name lookups and the TLS set-up
    // never hold up the window.
    QThread m_network;
};

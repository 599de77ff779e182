#pragma once

#include <QMainWindow>
#include <memory>

class CheckPage;
class InstallPage;
class LoadedPage;
class MaintenancePage;
class QAction;
class QActionGroup;
class QToolBar;
class UnpackPage;
class filesdrop;

namespace Ui {
class MainWindow;
}

// The five task pages in the order of the tab view.
enum TaskPage { PageMaintenance = 0, PageInstallation, PageUnpacking, PageChecking, PageLoaded };

// The main window: menus, the page toolbar and the page container. It assembles the pages
// and owns the menus' form; TovrelAppDelegate and LoadedDelegate give them behaviour.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

    MaintenancePage *maintenancePage() const { return m_maintenance; }
    InstallPage *installPage() const { return m_install; }
    UnpackPage *unpackPage() const { return m_unpack; }
    CheckPage *checkPage() const { return m_check; }
    LoadedPage *loadedPage() const { return m_loaded; }
    filesdrop *dropTarget() const;

    // Any action of the menus or the toolbar by its outlet name ("MI_Donate", "ti_m"):
    // the controllers connect their handlers to these.
    QAction *action(const QString &name) const;
    // The donation entry's spacer: a separator with a name, so it can be hidden.
    QAction *donateSpacer() const { return m_spacer; }
    QToolBar *pageToolBar() const;

    // The settings' check marks in the Options menu.
    bool prelinkKernel() const;
    void setPrelinkKernel(bool checked);
    void setCheckAtStartup(bool checked);
    // No donation page to go to: its entry and the separator above it go.
    void hideDonation();
    // Hiding and showing Extra need an Extra folder on the chosen volume.
    void setExtraMenuEnabled(bool enabled);
    // The version menu offers the version folders the volume has (one flag per version
    // "10.4" .. "10.7"), with Extra itself chosen.
    void showVersionFolders(const QList<bool> &present);
    // The version items, "independent" first.
    QList<QAction *> versionItems() const;
    // Marks the chosen version item alone and gives its version, or "" for Extra itself.
    QString markVersion(QAction *item);

    // A short word in the window's status line on how an action ended, or why something
    // can't be done now.
    void showStatus(const QString &text);
    QString statusText() const;
    // A page that can't be entered now: its toolbar item and Go menu entry are off and
    // say why in their tooltips. An empty reason opens it again.
    void setPageBlocked(int page, const QString &reason);

    // Page switching as the page container knows it (no guards here).
    int currentPage() const;
    void showPage(int index);

    // The toolbar's selection: "ti_m" .. "ti_l", empty when none is selected.
    QString selectedToolbarItem() const;
    void selectToolbarItem(const QString &identifier);
    static QString toolbarIdentifier(int page);

signals:
    // Once, when the first frame of the shown window has been painted; a platform that
    // never paints it gets the signal a moment after the window was shown.
    void firstFrameShown();

protected:
    bool event(QEvent *event) override;

private:
    void reportFirstFrame();

    std::unique_ptr<Ui::MainWindow> m_ui;
    MaintenancePage *m_maintenance;
    InstallPage *m_install;
    UnpackPage *m_unpack;
    CheckPage *m_check;
    LoadedPage *m_loaded;
    QActionGroup *m_toolbarGroup;
    QAction *m_spacer;
    QAction *m_verSpacer;
    QStringList m_toolTips; // the page items' own tooltips, for when they open again
    bool m_firstFrameReported = false;
};

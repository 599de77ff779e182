#pragma once

#include <QMainWindow>
#include <memory>

class CheckPage;
class InstallPage;
class LoadedPage;
class MaintenancePage;
class QAction;
class QActionGroup;
class UnpackPage;
class filesdrop;

namespace Ui {
class MainWindow;
}

// The five task pages in the order of the tab view.
enum TaskPage { PageMaintenance = 0, PageInstallation, PageUnpacking, PageChecking, PageLoaded };

// The main window: menus, the page toolbar and the page container. It only assembles
// the pages; TovrelAppDelegate and LoadedDelegate give them behaviour.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

    Ui::MainWindow *ui() const { return m_ui.get(); }
    MaintenancePage *maintenancePage() const { return m_maintenance; }
    InstallPage *installPage() const { return m_install; }
    UnpackPage *unpackPage() const { return m_unpack; }
    CheckPage *checkPage() const { return m_check; }
    LoadedPage *loadedPage() const { return m_loaded; }
    filesdrop *dropTarget() const;

    // Any action of the menus or the toolbar by object name ("MI_Donate", "ti_m").
    QAction *action(const QString &name) const;
    // The two spacers are separators; they carry names so they can be hidden.
    QAction *donateSpacer() const { return m_spacer; }
    QAction *versionSpacer() const { return m_verSpacer; }

    // Page switching as the page container knows it (no guards here).
    int currentPage() const;
    void showPage(int index);

    // The toolbar's selection: "ti_m" .. "ti_l", empty when none is selected.
    QString selectedToolbarItem() const;
    void selectToolbarItem(const QString &identifier);
    static QString toolbarIdentifier(int page);

private:
    std::unique_ptr<Ui::MainWindow> m_ui;
    MaintenancePage *m_maintenance;
    InstallPage *m_install;
    UnpackPage *m_unpack;
    CheckPage *m_check;
    LoadedPage *m_loaded;
    QActionGroup *m_toolbarGroup;
    QAction *m_spacer;
    QAction *m_verSpacer;
};

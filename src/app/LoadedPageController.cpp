#include "LoadedPageController.h"

#include "SandboxOffer.h"

#include "FileViewer.h"
#include "MainWindow.h"
#include "exec/AppServices.h"
#include "inspect/ArchitectureProbe.h"
#include "loaded/KextStatText.h"
#include "pages/LoadedPage.h"

#include <QFileInfo>

LoadedPageController::LoadedPageController(MainWindow &window, AppServices &services,
                                           QObject *parent)
    : QObject(parent), m_window(window), m_services(services),
      m_unloader([&services](const QString &command, const QString &argument) {
          return services.iconAlert().ExecuteRootErrorCmd(command, argument);
      }),
      m_probe([](const QString &kextPath) { return ArchitectureProbe().probeText(kextPath); }) {
    LoadedPage *page = window.loadedPage();
    connect(page, &LoadedPage::filterEdited, this, &LoadedPageController::controlTextDidChange);
    connect(page, &LoadedPage::selectionChanged, this, &LoadedPageController::KextSelected);
    connect(page, &LoadedPage::unloadClicked, this, &LoadedPageController::bUnload);
    connect(page, &LoadedPage::reloadClicked, this, &LoadedPageController::bReload);
    connect(page, &LoadedPage::revealClicked, this, &LoadedPageController::Reveal);
    connect(page, &LoadedPage::paneToggled, this, &LoadedPageController::UpDown);
    connect(page, &LoadedPage::offerClicked, this,
            [this] { SandboxOffer(m_services.paths().home()).acceptFrom(m_window); });
}

void LoadedPageController::TI_Loaded() {
    LoadedPage *page = m_window.loadedPage();
    page->setPaneCollapsed(true);
    const QString kextstat = m_services.paths().system(QStringLiteral("/usr/sbin/kextstat"));
    m_list.refresh(m_services.iconAlert().ExecuteCmd(kextstat, {}).value_or(QString()));
    // Without the tool the empty list would read as "nothing loaded".
    const bool missing = !QFileInfo(kextstat).isFile();
    page->showEmptyState(missing ? tr("kextstat is not available on this system.") : QString(),
                         SandboxOffer::applies(m_services.paths())
                             ? SandboxOffer(m_services.paths().home()).actionText()
                             : QString());
    // Entering from another page closes the pane; on the page itself it keeps its size
    // although the toggle now reads "collapsed".
    if (m_window.currentPage() != PageLoaded)
        page->closePaneNow();
    showRows(m_list.rows());
    m_window.showPage(PageLoaded);
    page->startFiltering();
}

void LoadedPageController::controlTextDidChange() {
    showRows(m_list.filtered(m_window.loadedPage()->filter()));
}

void LoadedPageController::showRows(const QStringList &rows) {
    m_window.loadedPage()->showRows(rows, LoadedKextList::foundText(rows.size()));
}

void LoadedPageController::KextSelected() {
    LoadedPage *page = m_window.loadedPage();
    const QString row = page->selectedRow();
    if (row.isEmpty() || page->paneCollapsed())
        return;
    const QString identifier = kextRowIdentifier(row);
    // An empty identifier (a line the listing could not fill) names no kext.
    const QString path = identifier.isEmpty() ? QString() : m_services.index().findPath(identifier);
    if (path.isEmpty()) {
        page->showUnknownKext(tr("Unknown kext"));
        return;
    }
    const ArchitectureProbe::Architectures found =
        ArchitectureProbe::loadedKextMarkers(m_probe(path));
    page->showKext(path, QFileInfo(path).fileName(), found.x86_64, found.i386);
}

void LoadedPageController::bUnload() {
    const TaskResult result = m_unloader.unload(m_window.loadedPage()->kextPath());
    if (result.ok) {
        TI_Loaded();
        m_window.loadedPage()->clearDetails();
    }
    m_services.alerts().showResult(result, &m_window);
}

void LoadedPageController::bReload() {
    // Deliberately neither refreshes the list nor clears the pane: the kext is back.
    m_services.alerts().showResult(m_unloader.reload(m_window.loadedPage()->kextPath()), &m_window);
}

void LoadedPageController::Reveal() {
    FileViewer::reveal(m_window.loadedPage()->kextPath());
}

void LoadedPageController::UpDown() {
    LoadedPage *page = m_window.loadedPage();
    if (page->paneCollapsed()) {
        page->animatePane(false);
    } else {
        // A kext installed since the last look is found after opening the pane again.
        m_services.index().rebuild(m_services.paths());
        page->animatePane(true);
    }
    KextSelected();
}

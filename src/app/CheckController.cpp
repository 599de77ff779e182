#include "CheckController.h"

#include "FilePanels.h"
#include "MainWindow.h"
#include "TaskRunner.h"
#include "TovrelAppDelegate.h"
#include "exec/AppServices.h"
#include "inspect/ArchitectureProbe.h"
#include "inspect/DependencyListing.h"
#include "inspect/DroppedFile.h"
#include "inspect/KextTestLoad.h"
#include "pages/CheckPage.h"
#include "plist/PlistFile.h"

#include <QFileInfo>
#include <QPointer>

CheckController::CheckController(TovrelAppDelegate &delegate, AppServices &services,
                                 TaskRunner &tasks, FilePanels &panels)
    : QObject(&delegate), m_delegate(delegate), m_services(services), m_tasks(tasks),
      m_panels(panels) {
    CheckPage *page = delegate.checkPage();
    connect(page, &CheckPage::chooseClicked, this, &CheckController::bCheck);
    connect(page, &CheckPage::dependenciesClicked, this, &CheckController::BCheckDepen);
    connect(page, &CheckPage::loadClicked, this, &CheckController::bkextload);
    connect(&delegate, &TovrelAppDelegate::filesDropped, this, &CheckController::onDrop);
}

void CheckController::bCheck() {
    m_panels.open(FilePanels::Kind::Kext,
                  [guard = QPointer(this)](int returnCode, const QStringList &paths) {
                      if (guard)
                          guard->OpenKextToCheckPanelDidEnd(returnCode, paths.value(0));
                  });
}

void CheckController::OpenKextToCheckPanelDidEnd(int returnCode, const QString &kext) {
    if (returnCode == 1)
        checkKext(kext);
}

void CheckController::checkKext(const QString &kext) {
    CheckPage *page = m_delegate.checkPage();
    page->setSpinning(true);
    page->showKext(kext, ArchitectureProbe::checkPageMarkers(ArchitectureProbe().probeText(kext)));
    if (page->dependenciesWanted())
        BCheckDepen();
    page->setSpinning(false);
}

void CheckController::BCheckDepen() {
    CheckPage *page = m_delegate.checkPage();
    const QString kext = page->kext();
    if (kext.isEmpty()) {
        m_services.iconAlert().ShowErrorMsg(KextTestLoad::noKextMessage(), &m_delegate.window());
        return;
    }
    page->setListing(true);
    // The listing is the job's text; it reaches the page at the end, on this thread.
    auto listing = std::make_shared<QString>();
    m_tasks.start(
        page,
        [paths = m_services.paths(), kext, listing] {
            *listing = DependencyListing::run(paths, kext);
            return TaskResult::done();
        },
        [page, listing](const TaskResult &) {
            page->setDependencies(*listing);
            page->setListing(false);
        });
}

void CheckController::bkextload() {
    const std::shared_ptr<Executor> executor = m_services.executor();
    const KextTestLoad load(m_services.paths(), *executor, m_services.index(),
                            [this](const QString &command, const QString &argument) {
                                return m_services.iconAlert().ExecuteRootErrorCmd(command,
                                                                                  argument);
                            });
    const QString kext = m_delegate.checkPage()->kext();
    const TaskResult result = load.run(kext);
    m_services.alerts().showResult(result, &m_delegate.window());
    // A load that worked has no alert of its own; a refused password has none either
    // and is no load.
    if (result.ok && result.message.isEmpty())
        m_delegate.window().showStatus(tr("Loaded %1.").arg(bundleIdentifier(kext)));
}

QString CheckController::bundleIdentifier(const QString &kext) {
    const auto info = PlistFile::readDictionary(kext + QStringLiteral("/Contents/Info.plist"));
    const QString identifier =
        info ? PlistFile::string(info.get(), "CFBundleIdentifier").value_or(QString()) : QString();
    return identifier.isEmpty() ? QFileInfo(kext).fileName() : identifier;
}

void CheckController::onDrop(const QStringList &files) {
    const DroppedFile drop(files, m_delegate.window().currentPage());
    if (drop.action() == DroppedFile::Action::CheckKext)
        checkKext(drop.path());
}

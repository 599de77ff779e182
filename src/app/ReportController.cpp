#include "ReportController.h"

#include "FilePanels.h"
#include "MainWindow.h"
#include "TaskRunner.h"
#include "exec/AppServices.h"
#include "exec/ProcessRunner.h"
#include "inspect/ArchitectureProbe.h"
#include "loaded/ReportOverview.h"
#include "loaded/SystemReport.h"

#include <QAction>
#include <QDir>
#include <QPointer>
#include <QStatusBar>
#include <memory>

ReportController::ReportController(MainWindow &window, AppServices &services, TaskRunner &tasks,
                                   FilePanels &panels, QObject *parent)
    : QObject(parent), m_window(window), m_services(services), m_tasks(tasks), m_panels(panels) {
    connect(window.action(QStringLiteral("MI_CreateList")), &QAction::triggered, this,
            &ReportController::CreateList);
}

void ReportController::CreateList() {
    const QString software = m_services.iconAlert()
                                 .ExecuteCmd(SystemReport::profilerTool(m_services.paths()),
                                             SystemReport::softwareArgs())
                                 .value_or(QString());
    m_panels.open(
        FilePanels::Kind::Report,
        [guard = QPointer(this)](int returnCode, const QStringList &files) {
            if (guard)
                guard->SaveTXT(returnCode, files.value(0));
        },
        ReportOverview::defaultFileName(software));
}

void ReportController::SaveTXT(int returnCode, const QString &file) {
    if (returnCode != 1)
        return;
    // A dry run writes nothing, not even the report.
    if (m_services.dryRun()) {
        m_window.statusBar()->showMessage(
            tr("Dry run: the report was not written to %1.").arg(file));
        return;
    }
    // The report describes the started system: a fresh index of its folders, copied so
    // that the background jobs never read one the page is rebuilding.
    m_services.index().rebuild(m_services.paths());
    auto index = std::make_shared<const KextLocationIndex>(m_services.index());
    SystemReport::Sources sources{
        m_services.paths(), ProcessRunner::output,
        [index](const QString &identifier) { return index->findPath(identifier); },
        [](const QString &kextPath) { return ArchitectureProbe().probeText(kextPath); }};
    // The report runs its own jobs; the runner's job waits for their end.
    m_tasks.start(
        this, [sources, file] { return SystemReport::start(sources, file).get(); },
        [this, file](const TaskResult &result) {
            m_services.alerts().showResult(result, &m_window);
            // The closing "Saved." names no file; the status line does, when it was written.
            if (result.ok && result.quietFailure.isEmpty())
                m_window.showStatus(tr("Report saved to %1.").arg(QDir::toNativeSeparators(file)));
        });
}

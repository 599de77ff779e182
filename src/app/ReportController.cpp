#include "ReportController.h"

#include "MainWindow.h"
#include "exec/IconAlert.h"
#include "exec/ProcessRunner.h"
#include "inspect/ArchitectureProbe.h"
#include "loaded/ReportOverview.h"
#include "ui_MainWindow.h"

#include <QApplication>
#include <QFileDialog>
#include <QPointer>
#include <memory>

ReportController::ReportController(MainWindow &window, QObject *parent)
    : QObject(parent), m_window(window),
      m_probe([](const QString &kextPath) { return ArchitectureProbe().probeText(kextPath); }) {
    connect(window.ui()->MI_CreateList, &QAction::triggered, this, &ReportController::CreateList);
}

void ReportController::CreateList() {
    IconAlert &icon = IconAlert::defaultinst();
    const QString software =
        icon.ExecuteCmd(SystemReport::profilerTool(icon.paths()), SystemReport::softwareArgs())
            .value_or(QString());
    const QString name = ReportOverview::defaultFileName(software);
    auto done = [guard = QPointer(this)](int returnCode, const QString &file) {
        if (guard)
            guard->SaveTXT(returnCode, file);
    };
    if (m_panel)
        m_panel(name, done);
    else
        openSavePanel(name, done);
}

void ReportController::openSavePanel(const QString &defaultName,
                                     std::function<void(int, const QString &)> done) {
    auto *panel = new QFileDialog(&m_window);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setWindowModality(Qt::WindowModal);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setNameFilter(tr("Text files (*.txt)"));
    panel->setDefaultSuffix(QStringLiteral("txt"));
    panel->selectFile(defaultName);
    connect(panel, &QFileDialog::finished, panel, [panel, done](int result) {
        const QStringList files = panel->selectedFiles();
        done(result == QDialog::Accepted ? 1 : 0, files.value(0));
    });
    panel->open();
}

void ReportController::SaveTXT(int returnCode, const QString &file) {
    if (returnCode != 1)
        return;
    // The report describes the started system: a fresh index of its folders, copied so
    // that the background jobs never read one the page is rebuilding.
    IconAlert &icon = IconAlert::defaultinst();
    icon.index().rebuild(icon.paths());
    auto index = std::make_shared<const KextLocationIndex>(icon.index());

    SystemReport::Sources sources{
        icon.paths(), ProcessRunner::output,
        [index](const QString &identifier) { return index->FindPath(identifier); }, m_probe};
    SystemReport::start(std::move(sources), file,
                        [guard = QPointer(this)](const SystemReport::End &end) {
                            // From a worker thread: the window's alerts are shown on the UI thread.
                            QMetaObject::invokeMethod(
                                qApp,
                                [guard, end] {
                                    if (guard)
                                        guard->showEnd(end);
                                },
                                Qt::QueuedConnection);
                        });
}

void ReportController::showEnd(const SystemReport::End &end) {
    IconAlert &icon = IconAlert::defaultinst();
    if (end.outcome == SystemReport::Outcome::Saved)
        icon.ShowInfoMsg(end.message, &m_window);
    else
        icon.ShowErrorMsg(end.message, &m_window);
    emit reportEnded(end);
}

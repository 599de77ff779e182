#include "AssembledWindow.h"

#include "CheckController.h"
#include "ExtraMenuController.h"
#include "InstallController.h"
#include "LogController.h"
#include "MaintenanceController.h"
#include "QuitGuard.h"
#include "RestoreController.h"
#include "UnpackController.h"
#include "VolumeHealthController.h"
#include "exec/AppServices.h"

#include <QLabel>
#include <QStatusBar>

AssembledWindow::AssembledWindow(AppServices &services)
    : delegate(window, services), loaded(window, services, tasks, panels) {
    QStringList notes;
    if (services.paths().isSandbox())
        notes << QStringLiteral("sandbox");
    if (services.dryRun())
        notes << QStringLiteral("dry run");
    window.setWindowTitle(notes.isEmpty()
                              ? QStringLiteral("KextKeeper")
                              : QStringLiteral("KextKeeper (%1)").arg(notes.join(", ")));
    if (services.dryRun()) {
        // Kept in the status bar for the whole session, beside the tasks' own messages.
        auto *note = new QLabel(QObject::tr("Dry run: nothing is changed; the commands are "
                                            "listed in the Log (Ctrl+L)."));
        note->setObjectName(QStringLiteral("dryRunNote"));
        window.statusBar()->addPermanentWidget(note);
    }
    // Feature controllers: one line each, parented to the delegate they are made with.
    new MaintenanceController(delegate, services, tasks);
    new ExtraMenuController(delegate, services);
    auto *install = new InstallController(delegate, services, tasks, panels);
    new RestoreController(delegate, services, *install);
    new LogController(window, services, &delegate);
    new CheckController(delegate, services, tasks, panels);
    new UnpackController(delegate, services, panels);
    new VolumeHealthController(delegate, services, tasks);
    // Root commands are never left running unseen behind a closed window.
    auto *quit = new QuitGuard(window, [this] { return tasks.running() > 0; });
    QObject::connect(&tasks, &TaskRunner::taskEnded, quit, &QuitGuard::taskEnded);
}

AssembledWindow::~AssembledWindow() {
    tasks.finishAll();
}

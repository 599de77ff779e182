#include "AssembledWindow.h"

#include "CheckController.h"
#include "ExtraMenuController.h"
#include "InstallController.h"
#include "MaintenanceController.h"
#include "QuitGuard.h"
#include "UnpackController.h"
#include "VolumeHealthController.h"
#include "exec/AppServices.h"

AssembledWindow::AssembledWindow(AppServices &services)
    : delegate(window, services), loaded(window, services, tasks, panels) {
    window.setWindowTitle(services.paths().isSandbox() ? QStringLiteral("KextKeeper (sandbox)")
                                                       : QStringLiteral("KextKeeper"));
    // Feature controllers: one line each, parented to the delegate they are made with.
    new MaintenanceController(delegate, services, tasks);
    new ExtraMenuController(delegate, services);
    new InstallController(delegate, services, tasks, panels);
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

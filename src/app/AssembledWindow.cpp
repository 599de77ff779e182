#include "AssembledWindow.h"

#include "CheckController.h"
#include "ExtraMenuController.h"
#include "InstallController.h"
#include "MaintenanceController.h"
#include "UnpackController.h"
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
}

AssembledWindow::~AssembledWindow() {
    tasks.finishAll();
}

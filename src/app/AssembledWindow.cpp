#include "AssembledWindow.h"

#include "CheckController.h"
#include "ExtraMenuController.h"
#include "InstallController.h"
#include "MaintenanceController.h"
#include "UnpackController.h"
#include "volumes/SystemPaths.h"

AssembledWindow::AssembledWindow(const SystemPaths &paths)
    : delegate(window, paths), loaded(window) {
    window.setWindowTitle(paths.isSandbox() ? QStringLiteral("KextKeeper (sandbox)")
                                            : QStringLiteral("KextKeeper"));
    // Feature controllers: one line each, parented to the delegate they are made with.
    new MaintenanceController(delegate);
    new ExtraMenuController(delegate);
    new InstallController(delegate);
    new CheckController(delegate);
    new UnpackController(delegate);
}

#include "WindowLauncher.h"

#include "AppSettings.h"
#include "CheckController.h"
#include "InstallController.h"
#include "ExtraMenuController.h"
#include "LoadedDelegate.h"
#include "MainWindow.h"
#include "MaintenanceController.h"
#include "MessageBoxSheets.h"
#include "PasswordDialog.h"
#include "TovrelAppDelegate.h"
#include "UnpackController.h"
#include "exec/AdminAuthentication.h"
#include "exec/FreedesktopNotifier.h"
#include "exec/IconAlert.h"

#include <QApplication>
#include <QTimer>

int launchWindow(QApplication &app, const SystemPaths &paths) {
    AppSettings(paths.contentsDir()).seedDefaults();

    MainWindow window;
    window.setWindowTitle(paths.isSandbox() ? QStringLiteral("KextKeeper (sandbox)")
                                            : QStringLiteral("KextKeeper"));
    static FreedesktopNotifier notifier;
    static MessageBoxSheets sheets;
    static PasswordDialog prompt(&window);
    AdminAuthentication::sharedInstance().setPasswordPrompt(&prompt);
    IconAlert::configureDefault(paths, AdminAuthentication::sharedInstance(),
                                Alerts(&notifier, &sheets));

    TovrelAppDelegate delegate(window, paths);
    LoadedDelegate loaded(window);

    // Feature controllers: one line each, parented to the delegate they are made with.
    new MaintenanceController(delegate);
    new ExtraMenuController(delegate);
    new InstallController(delegate);
    new CheckController(delegate);
    new UnpackController(delegate);

    // Closing the main window ends the program (Qt quits after the last window).
    app.setQuitOnLastWindowClosed(true);
    window.resize(800, 600);
    window.show();
    QTimer::singleShot(0, &delegate, &TovrelAppDelegate::applicationDidFinishLaunching);
    return app.exec();
}

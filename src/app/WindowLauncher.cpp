#include "WindowLauncher.h"

#include "AppSettings.h"
#include "AssembledWindow.h"
#include "MessageBoxSheets.h"
#include "PasswordDialog.h"
#include "exec/AdminAuthentication.h"
#include "exec/FreedesktopNotifier.h"
#include "exec/IconAlert.h"

#include <QApplication>
#include <QTimer>

int launchWindow(QApplication &app, const SystemPaths &paths) {
    AppSettings(paths.contentsDir()).seedDefaults();

    AssembledWindow assembled(paths);
    static FreedesktopNotifier notifier;
    static MessageBoxSheets sheets{SystemImages(paths)};
    // A child of the window, so it goes before the window does, not after it.
    PasswordDialog prompt(&assembled.window);
    AdminAuthentication::sharedInstance().setPasswordPrompt(&prompt);
    IconAlert::configureDefault(paths, AdminAuthentication::sharedInstance(),
                                Alerts(&notifier, &sheets));
    prompt.setErrorHandler([&assembled](const QString &text) {
        IconAlert::defaultinst().ShowErrorMsg(text, &assembled.window);
    });

    // Closing the main window ends the program (Qt quits after the last window).
    app.setQuitOnLastWindowClosed(true);
    assembled.window.resize(800, 600);
    assembled.window.show();
    QTimer::singleShot(0, &assembled.delegate, &TovrelAppDelegate::applicationDidFinishLaunching);
    const int status = app.exec();
    AdminAuthentication::sharedInstance().setPasswordPrompt(nullptr);
    return status;
}

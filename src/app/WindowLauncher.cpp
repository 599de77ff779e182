#include "WindowLauncher.h"

#include "AppSettings.h"
#include "AssembledWindow.h"
#include "MessageBoxSheets.h"
#include "PasswordDialog.h"
#include "exec/AdminAuthentication.h"
#include "exec/AppServices.h"
#include "exec/FreedesktopNotifier.h"

#include <QApplication>
#include <QTimer>

int launchWindow(QApplication &app, const SystemPaths &paths, AdminAuthentication &session) {
    AppSettings(paths.contentsDir()).seedDefaults();

    FreedesktopNotifier notifier;
    MessageBoxSheets sheets{SystemImages(paths)};
    AppServices services(paths, session, Alerts(&notifier, &sheets));
    AssembledWindow assembled(services);
    // A child of the window, so it goes before the window does, not after it.
    PasswordDialog prompt(&assembled.window);
    session.setPasswordPrompt(&prompt);
    prompt.setErrorHandler([&services, &assembled](const QString &text) {
        services.iconAlert().ShowErrorMsg(text, &assembled.window);
    });

    // Closing the main window ends the program (Qt quits after the last window).
    app.setQuitOnLastWindowClosed(true);
    assembled.window.resize(800, 600);
    assembled.window.show();
    QTimer::singleShot(0, &assembled.delegate, &TovrelAppDelegate::applicationDidFinishLaunching);
    const int status = app.exec();
    session.setPasswordPrompt(nullptr);
    return status;
}

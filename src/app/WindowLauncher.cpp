#include "WindowLauncher.h"

#include "MessageBoxSheets.h"
#include "PasswordDialog.h"
#include "exec/AdminAuthentication.h"
#include "exec/FreedesktopNotifier.h"
#include "exec/IconAlert.h"

#include <QApplication>
#include <QMainWindow>

int launchWindow(QApplication &app, const SystemPaths &paths) {
    QMainWindow window;
    window.setWindowTitle(paths.isSandbox() ? QStringLiteral("KextKeeper (sandbox)")
                                            : QStringLiteral("KextKeeper"));
    static FreedesktopNotifier notifier;
    static MessageBoxSheets sheets;
    static PasswordDialog prompt(&window);
    AdminAuthentication::sharedInstance().setPasswordPrompt(&prompt);
    IconAlert::configureDefault(paths, AdminAuthentication::sharedInstance(),
                                Alerts(&notifier, &sheets));
    window.resize(800, 600);
    window.show();
    return app.exec();
}

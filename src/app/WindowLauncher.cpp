#include "WindowLauncher.h"

#include "AppSettings.h"
#include "AssembledWindow.h"
#include "MessageBoxSheets.h"
#include "PasswordDialog.h"
#include "WindowState.h"
#include "exec/AdminAuthentication.h"
#include "exec/AppServices.h"
#include "exec/CommandJournal.h"
#include "exec/FreedesktopNotifier.h"

#include <QAction>
#include <QApplication>

int launchWindow(QApplication &app, const SystemPaths &paths, AdminAuthentication &session,
                 CommandJournal &journal, bool dryRun) {
    AppSettings(paths.contentsDir()).seedDefaults();

    FreedesktopNotifier notifier;
    MessageBoxSheets sheets{SystemImages(paths)};
    AppServices services(paths, session, Alerts(&notifier, &sheets));
    services.setJournal(&journal);
    if (dryRun)
        services.planOnly(journal);
    else
        session.setJournal(&journal);
    AssembledWindow assembled(services);
    // A child of the window, so it goes before the window does, not after it.
    PasswordDialog prompt(&assembled.window);
    session.setPasswordPrompt(&prompt);
    prompt.setErrorHandler([&services, &assembled](const QString &text) {
        services.iconAlert().ShowErrorMsg(text, &assembled.window);
    });

    // Closing the main window ends the program (Qt quits after the last window).
    app.setQuitOnLastWindowClosed(true);
    MainWindow &window = assembled.window;
    QStringList pageItems;
    for (int page = PageMaintenance; page <= PageLoaded; ++page)
        pageItems << MainWindow::toolbarIdentifier(page);
    WindowState state;
    window.resize(800, 600);
    const QString lastPage = state.restore(window, *window.pageToolBar(), pageItems);
    // The window first; the start-up steps once its first frame is on the screen.
    QObject::connect(&window, &MainWindow::firstFrameShown, &assembled.delegate,
                     [&assembled, &window, lastPage] {
                         assembled.delegate.applicationDidFinishLaunching();
                         // The page shown last is entered as a click on its item would,
                         // guards and all.
                         if (QAction *item = window.action(lastPage);
                             item && lastPage != QLatin1String("ti_m"))
                             item->trigger();
                     });
    window.show();
    QObject::connect(&app, &QApplication::aboutToQuit, &window, [&] {
        state.save(window, *window.pageToolBar(), pageItems, window.selectedToolbarItem());
    });
    const int status = app.exec();
    session.setPasswordPrompt(nullptr);
    return status;
}

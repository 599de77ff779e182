#pragma once

class AdminAuthentication;
class CommandJournal;
class QApplication;
class SystemPaths;

// Builds the program's services for the window (notifications, sheets, the password
// dialog, the journal), the main window on them, runs the start-up sequence and the event
// loop. With `dryRun` root commands are listed in the Log window instead of being run.
int launchWindow(QApplication &app, const SystemPaths &paths, AdminAuthentication &session,
                 CommandJournal &journal, bool dryRun = false);

#pragma once

class AdminAuthentication;
class QApplication;
class SystemPaths;

// Builds the program's services for the window (notifications, sheets, the password
// dialog), the main window on them, runs the start-up sequence and the event loop.
int launchWindow(QApplication &app, const SystemPaths &paths, AdminAuthentication &session);

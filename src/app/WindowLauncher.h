#pragma once

class QApplication;
class SystemPaths;

// Builds the main window and its shared objects, runs the start-up sequence and the
// event loop.
int launchWindow(QApplication &app, const SystemPaths &paths);

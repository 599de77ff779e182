#pragma once

class MainWindow;
class SystemPaths;

// Tells on the window's status line that mkext archives are built by our own code,
// because the system has no kextcache (newer macOS, any other host). Shown when a task
// that may rebuild an archive starts; nothing is said when Apple's tool does the work.
void showMkextBuilderNotice(MainWindow &window, const SystemPaths &paths);

#pragma once

#include "LoadedDelegate.h"
#include "MainWindow.h"
#include "TovrelAppDelegate.h"

class SystemPaths;

// The main window with its two delegates and every feature controller, wired the way
// the program runs it. The controllers are children of the delegate they were made
// with, so whoever needs one finds it with findChild.
class AssembledWindow {
public:
    explicit AssembledWindow(const SystemPaths &paths);

    MainWindow window;
    TovrelAppDelegate delegate;
    LoadedDelegate loaded;
};

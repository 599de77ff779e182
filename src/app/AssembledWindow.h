#pragma once

#include "FilePanels.h"
#include "LoadedDelegate.h"
#include "MainWindow.h"
#include "TaskRunner.h"
#include "TovrelAppDelegate.h"

class AppServices;

// The main window with its two delegates and every feature controller, wired the way
// the program runs it. The controllers are children of the delegate they were made
// with, so whoever needs one finds it with findChild.
class AssembledWindow {
public:
    explicit AssembledWindow(AppServices &services);
    // Running tasks are waited for before anything they report to goes.
    ~AssembledWindow();

    TaskRunner tasks;
    MainWindow window;
    FilePanels panels{&window};
    TovrelAppDelegate delegate;
    LoadedDelegate loaded;
};

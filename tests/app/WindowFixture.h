#pragma once

#include "FilePanels.h"
#include "MainWindow.h"
#include "TaskRunner.h"
#include "TestServices.h"
#include "TovrelAppDelegate.h"
#include "volumes/SystemPaths.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <memory>

// A main window and its delegate over a temporary system root, home and settings
// folder, so every test sees its own volumes and its own Info.plist.
struct WindowFixture {
    QTemporaryDir dir;
    SystemPaths paths;
    TestServices test;
    std::unique_ptr<MainWindow> window;
    std::unique_ptr<TovrelAppDelegate> delegate;
    std::unique_ptr<FilePanels> panels;
    // Goes first, waiting for a task still running before the pages go.
    TaskRunner tasks;
    QStringList isRootAsked;
    QString startedVolume; // title answered as the started system

    // Alerts go to `sheets` when given.
    explicit WindowFixture(SheetPresenter *sheets = nullptr)
        : paths(dir.path() + QStringLiteral("/root"), dir.path() + QStringLiteral("/home"),
                dir.path() + QStringLiteral("/contents")),
          test(paths, sheets) {
        for (const QString &folder : {paths.volumesDir(), paths.home(), paths.contentsDir()})
            QDir().mkpath(folder);
        test.services.setStartedSystemCheck([this](const QString &path) {
            isRootAsked << path;
            return !startedVolume.isEmpty() && path == paths.volumeRoot(startedVolume);
        });
        window = std::make_unique<MainWindow>();
        delegate = std::make_unique<TovrelAppDelegate>(*window, test.services);
        panels = std::make_unique<FilePanels>(window.get());
    }

    // Runs the start-up steps and waits for their end (the volume list is made on the pool).
    void launch() {
        QSignalSpy launched(delegate.get(), &TovrelAppDelegate::launched);
        delegate->applicationDidFinishLaunching();
        QTRY_COMPARE(launched.count(), 1);
    }

    // Creates folders below a volume: makeVolume("HD", {"System/Library/Extensions"}).
    QString makeVolume(const QString &title, const QStringList &folders) const {
        const QString root = paths.volumeRoot(title);
        QDir().mkpath(root);
        for (const QString &folder : folders)
            QDir().mkpath(root + QLatin1Char('/') + folder);
        return root;
    }

    template <typename T> T *find(const char *name) const {
        return window->findChild<T *>(QLatin1String(name));
    }
};

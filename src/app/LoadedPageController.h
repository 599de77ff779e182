#pragma once

#include "loaded/KextUnloader.h"
#include "loaded/LoadedKextList.h"

#include <QObject>
#include <functional>

class AppServices;
class MainWindow;

// The loaded kexts page: the list from the kext status tool with its filter, the detail
// pane of the selected kext (path, name, x86_64 and i386 code), and unload, reload and
// reveal. Everything runs on the UI thread: the tool, the probe and the root commands
// are short.
class LoadedPageController : public QObject {
    Q_OBJECT
public:
    LoadedPageController(MainWindow &window, AppServices &services, QObject *parent = nullptr);

    // The description of a kext's executable; the architecture probe unless a test
    // puts something else here.
    using Probe = std::function<QString(const QString &kextPath)>;
    void setProbe(Probe probe) { m_probe = std::move(probe); }

public slots:
    // Runs the kext status tool, refills the list and shows the page.
    void TI_Loaded();
    void controlTextDidChange();
    void KextSelected();
    void bUnload();
    void bReload();
    void Reveal();
    void UpDown();

private:
    void showRows(const QStringList &rows);

    MainWindow &m_window;
    AppServices &m_services;
    LoadedKextList m_list;
    KextUnloader m_unloader;
    Probe m_probe;
};

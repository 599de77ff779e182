#pragma once

#include "loaded/KextUnloader.h"
#include "loaded/LoadedKextList.h"

#include <QObject>
#include <QPointer>
#include <functional>

class MainWindow;
class QPropertyAnimation;
class QStringListModel;

namespace Ui {
class LoadedPage;
}

// The loaded kexts page: the list from the kext status tool with its filter, the detail
// pane of the selected kext (path, name, x86_64 and i386 code), and unload, reload and
// reveal. Everything runs on the UI thread: the tool, the probe and the root commands
// are short.
class LoadedPageController : public QObject {
    Q_OBJECT
public:
    explicit LoadedPageController(MainWindow &window, QObject *parent = nullptr);

    // The description of a kext's executable; the architecture probe unless a test
    // puts something else here.
    using Probe = std::function<QString(const QString &kextPath)>;
    void setProbe(Probe probe) { m_probe = std::move(probe); }

    // The height the detail pane has, or is animating to.
    static constexpr int collapsedHeight = 1;
    static constexpr int expandedHeight = 72;

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
    Ui::LoadedPage *ui() const;
    bool collapsed() const;
    void showRows(const QStringList &rows);
    void animatePane(int height);
    void clearDetails();

    MainWindow &m_window;
    LoadedKextList m_list;
    QStringListModel *m_model;
    QPropertyAnimation *m_animation;
    KextUnloader m_unloader;
    Probe m_probe;
};

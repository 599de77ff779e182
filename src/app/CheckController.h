#pragma once

#include "inspect/ArchitectureProbe.h"

#include <QObject>
#include <functional>

class Executor;
class TovrelAppDelegate;
namespace Ui {
class CheckPage;
}

// The check page: a kext chosen in a panel or dropped on the window is probed for its
// processors, its libraries are listed in the background, and it can be test-loaded.
class CheckController : public QObject {
    Q_OBJECT
public:
    explicit CheckController(TovrelAppDelegate &delegate);

    // Asks for one kext bundle and answers with the panel's return code (1 = chosen)
    // and the path. A window-modal open panel unless a test answers.
    using OpenPanel = std::function<void(std::function<void(int, const QString &)> done)>;
    void setOpenPanel(OpenPanel panel) { m_panel = std::move(panel); }
    // Gives a kext's probe text; the built-in describer unless a test puts its own in.
    void setProbe(ArchitectureProbe::Describer probe) { m_probe = std::move(probe); }
    // Runs the root steps of the test load; the privileged session unless replaced.
    void setExecutor(Executor *executor) { m_executor = executor; }

public slots:
    void bCheck();
    void OpenKextToCheckPanelDidEnd(int returnCode, const QString &kext);
    // The probe sequence shared by the panel and a dropped kext.
    void checkKext(const QString &kext);
    void BCheckDepen();
    void bkextload();

signals:
    // The dependency listing has been put into the text view (tests wait for this).
    void dependenciesShown();

private:
    Ui::CheckPage *ui() const;
    void openPanel(std::function<void(int, const QString &)> done);
    void onDrop(const QStringList &files);
    void showError(const QString &message);

    TovrelAppDelegate &m_delegate;
    OpenPanel m_panel;
    ArchitectureProbe::Describer m_probe;
    Executor *m_executor = nullptr;
};

#pragma once

#include "install/InstallList.h"

#include <QObject>
#include <QStringList>
#include <functional>

class Executor;
class TovrelAppDelegate;
namespace Ui {
class InstallPage;
}

// The installation page: the install list shown by its table, the buttons that fill
// and empty it, and the install button that runs the installation in the background.
class InstallController : public QObject {
    Q_OBJECT
public:
    explicit InstallController(TovrelAppDelegate &delegate);

    // The install list (the table's model).
    InstallList &instkexts() { return m_list; }

    // Asks for bundles and answers with the panel's return code (1 = chosen) and the
    // chosen paths in order. A window-modal file dialog unless a test answers.
    using OpenPanel = std::function<void(std::function<void(int, const QStringList &)> done)>;
    void setOpenPanel(OpenPanel panel) { m_panel = std::move(panel); }
    // Runs the root commands; the privileged session unless replaced.
    void setExecutor(Executor *executor) { m_executor = executor; }
    // Whether a volume root is the started system; diskutil unless replaced.
    void setIsRootProbe(std::function<bool(const QString &)> probe) { m_isRoot = std::move(probe); }

public slots:
    void Browse();
    void OpenKextToInstallPanelDidEnd(int returnCode, const QStringList &paths);
    void bClear();
    void bInst();

signals:
    // The background job has returned (tests wait for this).
    void installationEnded();

private:
    Ui::InstallPage *ui() const;
    void openPanel(std::function<void(int, const QStringList &)> done);

    TovrelAppDelegate &m_delegate;
    InstallList m_list;
    OpenPanel m_panel;
    Executor *m_executor = nullptr;
    std::function<bool(const QString &)> m_isRoot;
};

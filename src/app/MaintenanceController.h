#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <memory>

class Executor;
class TovrelAppDelegate;

// The maintenance page's button: reads the page into options, checks them and asks for
// root on the UI thread, then runs the plan on a background thread. The plan's effects
// come back to the UI thread in the order the plan made them.
class MaintenanceController : public QObject {
    Q_OBJECT
public:
    explicit MaintenanceController(TovrelAppDelegate &delegate);
    ~MaintenanceController() override;

    // Seams for tests: the executor of root commands (the privileged session by
    // default) and the started-system probe (diskutil by default).
    void setExecutor(std::shared_ptr<Executor> executor) { m_executor = std::move(executor); }
    void setIsRoot(std::function<bool(const QString &)> isRoot) { m_isRoot = std::move(isRoot); }

    // Whether a job was handed to the background and has not ended yet.
    bool jobRunning() const { return m_jobRunning; }

public slots:
    void bMain();

signals:
    // The job has shown its closing alert.
    void jobFinished();

private:
    class PostingView;
    friend class PostingView;
    void setControlsEnabled(bool enabled);

    TovrelAppDelegate &m_delegate;
    std::shared_ptr<Executor> m_executor;
    std::function<bool(const QString &)> m_isRoot;
    bool m_jobRunning = false;
};

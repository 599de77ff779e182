#pragma once

#include "exec/TaskResult.h"
#include "maintenance/ExtraFolderView.h"

#include <QObject>
#include <memory>
#include <optional>

class AppServices;
class Executor;
class ExtraFolderOperations;
class QMessageBox;
class TovrelAppDelegate;

// The Extra menu: move KextStore back to Extensions, move Extensions into KextStore,
// show and hide the Extra folder. Everything runs on the UI thread; the two moves first
// ask "Continue?" in a sheet on the main window and finish in the sheet's answer.
class ExtraMenuController : public QObject, private ExtraFolderView {
    Q_OBJECT
public:
    ExtraMenuController(TovrelAppDelegate &delegate, AppServices &services);
    ~ExtraMenuController() override;

    // The question sheet open now, if any (tests answer it).
    QMessageBox *openQuestion() const { return m_question; }

public slots:
    void BringBackEE();
    void MI_CreateEKS();
    void ShowExtra();
    void HideExtra();

private:
    QString selectedVolume() const override;
    void rootPathChosen(const QString &rootPath) override;
    void askToContinue(const QString &informativeText, std::function<void(int)> answered) override;
    void commandsFailed(const QStringList &failures) override;
    void reevaluateVolume() override;
    void showEnd(const std::optional<TaskResult> &result);
    void showHiddenEnd(const TaskResult &result, const QString &done);

    TovrelAppDelegate &m_delegate;
    AppServices &m_services;
    std::shared_ptr<Executor> m_executor;
    std::unique_ptr<ExtraFolderOperations> m_operations;
    QMessageBox *m_question = nullptr;
    bool m_commandsFailed = false;
};

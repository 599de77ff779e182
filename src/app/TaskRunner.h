#pragma once

#include "exec/TaskResult.h"

#include <QObject>
#include <QThreadPool>
#include <functional>

template <typename T> class QFutureWatcher;

// Runs the window's long tasks one way: the job (a plan's run) goes to the pool, its
// effects come back through its TaskReporter as queued signals, and its result reaches
// `ended` on the UI thread once the job has returned, after every effect it reported.
// The job holds what it uses (plan, executor) by value or shared pointer.
class TaskRunner : public QObject {
    Q_OBJECT
public:
    using Job = std::function<TaskResult()>;
    using End = std::function<void(const TaskResult &)>;

    explicit TaskRunner(QObject *parent = nullptr);
    ~TaskRunner() override;

    // `ended` is not called once `context` is gone.
    void start(QObject *context, Job job, End ended);
    // Tasks started and not ended yet.
    int running() const { return int(m_watchers.size()); }

    // The cancellation point: the program is asked to quit while tasks run. Their ends are
    // no longer shown, and each is waited for rather than cut off halfway through its root
    // commands; events are still handled meanwhile, so a password the task asks for can
    // be answered.
    void finishAll();

signals:
    // A task's end has been handled (the alert is shown).
    void taskEnded(const TaskResult &result);

private:
    QThreadPool m_pool;
    QList<QFutureWatcher<TaskResult> *> m_watchers;
    bool m_closing = false;
};

#include "TaskRunner.h"

#include <QEventLoop>
#include <QFutureWatcher>
#include <QPointer>
#include <QtConcurrent/QtConcurrentRun>

TaskRunner::TaskRunner(QObject *parent) : QObject(parent) {
    qRegisterMetaType<TaskResult>();
}

TaskRunner::~TaskRunner() {
    finishAll();
}

void TaskRunner::start(QObject *context, Job job, End ended) {
    auto *watcher = new QFutureWatcher<TaskResult>(this);
    connect(watcher, &QFutureWatcherBase::finished, this,
            [this, watcher, guard = QPointer<QObject>(context), ended] {
                m_watchers.removeOne(watcher);
                watcher->deleteLater();
                if (m_closing)
                    return;
                const TaskResult result = watcher->result();
                if (guard && ended)
                    ended(result);
                emit taskEnded(result);
            });
    m_watchers << watcher;
    watcher->setFuture(QtConcurrent::run(&m_pool, std::move(job)));
}

void TaskRunner::finishAll() {
    m_closing = true;
    const QList<QFutureWatcher<TaskResult> *> watchers = m_watchers;
    for (QFutureWatcher<TaskResult> *watcher : watchers) {
        // One that ended while an earlier one was waited for is gone already.
        if (!m_watchers.contains(watcher) || watcher->isFinished())
            continue;
        QEventLoop loop;
        connect(watcher, &QFutureWatcherBase::finished, &loop, &QEventLoop::quit);
        loop.exec();
    }
    m_pool.waitForDone();
}

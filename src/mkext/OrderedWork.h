#pragma once

#include <QFuture>
#include <QQueue>
#include <QThreadPool>
#include <QtConcurrent>
#include <functional>

// Runs numbered jobs on the thread pool a few at a time and hands their results back in
// the jobs' order, so work done in parallel gives exactly what one thread would. At most
// `window` results exist at once (running, or done and waiting to be taken), which holds
// memory to a few jobs' worth however many jobs there are.
template <typename T> class OrderedWork {
public:
    // `window` 0: twice the pool's threads.
    OrderedWork(qsizetype count, std::function<T(qsizetype)> job, qsizetype window = 0)
        : m_job(std::move(job)), m_count(count),
          m_window(window > 0 ? window
                              : 2 * qMax(1, QThreadPool::globalInstance()->maxThreadCount())) {}
    OrderedWork(const OrderedWork &) = delete;
    OrderedWork &operator=(const OrderedWork &) = delete;
    // Jobs still running may use what the caller lent them: wait for them.
    ~OrderedWork() {
        for (QFuture<T> &future : m_inFlight)
            future.waitForFinished();
    }

    bool atEnd() const { return m_taken == m_count; }

    // The result of the next job in order. A job not started yet when it is wanted runs
    // on the calling thread.
    T next() {
        while (m_started < m_count && m_inFlight.size() < m_window) {
            const qsizetype index = m_started++;
            m_inFlight.enqueue(QtConcurrent::run(QThreadPool::globalInstance(),
                                                 [this, index] { return m_job(index); }));
        }
        ++m_taken;
        return m_inFlight.dequeue().result();
    }

private:
    std::function<T(qsizetype)> m_job;
    qsizetype m_count;
    qsizetype m_window;
    qsizetype m_started = 0;
    qsizetype m_taken = 0;
    QQueue<QFuture<T>> m_inFlight;
};

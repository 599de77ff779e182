#pragma once

#include "exec/Executor.h"

#include <QFileInfo>
#include <QMutex>
#include <QSemaphore>
#include <QStringList>

// Records the commands a job runs on its background thread, each as "TOOL ARGS" with the
// tool's file name only. With hold set the first command waits until the test releases
// it, so the test can look at the window while the job is under way.
class HeldExecutor final : public Executor {
public:
    bool grant = true;
    bool hold = false;
    int authorizeCalls = 0;
    QSemaphore started; // given when the held command arrives
    QSemaphore release;

    bool authorize() override {
        ++authorizeCalls;
        return grant;
    }
    CommandResult run(const Command &command) override {
        bool first = false;
        {
            QMutexLocker lock(&m_mutex);
            first = m_commands.isEmpty();
            m_commands << QFileInfo(command.tool).fileName() + QLatin1Char(' ') +
                              command.args.join(QLatin1Char(' '));
        }
        if (first && hold) {
            started.release();
            release.acquire();
        }
        return {};
    }
    bool simulated() const override { return true; }
    QStringList commands() {
        QMutexLocker lock(&m_mutex);
        return m_commands;
    }

private:
    QMutex m_mutex;
    QStringList m_commands;
};

#include "loaded/SystemReport.h"

#include "PosixOnly.h"
#include "exec/Tr.h"
#include "loaded/ExtraKextTable.h"
#include "loaded/ReportOverview.h"

#include <QSaveFile>
#include <QThread>
#include <QThreadPool>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace {

// One report's shared state. Each job writes only its own part and then raises its
// flag under the lock; the writer sleeps on the condition until it has all three parts
// (or the report is abandoned) and reads a part only after its flag is up.
struct ReportState {
    SystemReport::Sources sources;
    QString file;
    std::promise<TaskResult> end;

    QString list;
    LoadedKextRows first;
    LoadedKextRows second;

    std::mutex lock;
    std::condition_variable changed;
    bool listDone = false;
    bool abandoned = false;
    bool kext1Done = false;
    bool kext2Done = false;

    void raise(bool ReportState::*flag) {
        {
            const std::lock_guard guard(lock);
            this->*flag = true;
        }
        changed.notify_one();
    }
    // True when the parts are all there, false when the report was abandoned.
    bool waitForParts() {
        std::unique_lock guard(lock);
        changed.wait(guard, [this] { return abandoned || (listDone && kext1Done && kext2Done); });
        return !abandoned;
    }
};

QString runTool(const ReportState &state, const QString &tool, const QStringList &args) {
    return state.sources.runTool(tool, args).value_or(QString());
}

void sectionsJob(ReportState &state) {
    const SystemPaths &paths = state.sources.paths;
    const QString profiler = SystemReport::profilerTool(paths);
    const QString software = runTool(state, profiler, SystemReport::softwareArgs());
    const QString hardware = runTool(state, profiler, SystemReport::hardwareArgs());
    const std::optional<QString> extra = ExtraKextTable::section(paths);
    if (!extra) {
        state.raise(&ReportState::abandoned);
        return;
    }
    state.list = ReportOverview::sections(software, hardware) + *extra;
    state.raise(&ReportState::listDone);
}

void rowJob(ReportState &state, LoadedKextRows::Half half) {
    const QString listing =
        runTool(state, SystemReport::kextstatTool(state.sources.paths), QStringList());
    LoadedKextRows rows =
        LoadedKextRows::build(listing, half, state.sources.pathOf, state.sources.probe);
    if (half == LoadedKextRows::Half::First) {
        state.first = std::move(rows);
        state.raise(&ReportState::kext1Done);
    } else {
        state.second = std::move(rows);
        state.raise(&ReportState::kext2Done);
    }
}

// A row job's own thread, named like the serial queue it stands for so that it can be
// told apart in a debugger or a process listing.
std::jthread labelledThread(const char *label, std::function<void()> job) {
    return std::jthread([label, job = std::move(job)] {
        QThread::currentThread()->setObjectName(QString::fromLatin1(label));
        kkNameThisThread(label);
        job();
    });
}

TaskResult writeReport(ReportState &state) {
    state.list += LoadedKextRows::section(state.first, state.second);
    QSaveFile file(state.file);
    bool written = file.open(QIODevice::WriteOnly);
    if (written) {
        file.write(state.list.toUtf8());
        written = file.commit();
    }
    TaskResult saved = TaskResult::done(kkTr("Saved."));
    if (!written)
        saved.quietFailure = QStringLiteral("could not write ") + state.file;
    return saved;
}

void writerJob(ReportState &state, std::jthread &rows1, std::jthread &rows2) {
    const bool complete = state.waitForParts();
    // An abandoned report writes nothing; its row jobs still end on their own.
    rows1.join();
    rows2.join();
    state.end.set_value(complete ? writeReport(state)
                                 : TaskResult::failed(ExtraKextTable::bothFoldersMessage()));
}

} // namespace

QString SystemReport::profilerTool(const SystemPaths &paths) {
    return paths.system(QStringLiteral("/usr/sbin/system_profiler"));
}

QString SystemReport::kextstatTool(const SystemPaths &paths) {
    return paths.system(QStringLiteral("/usr/sbin/kextstat"));
}

std::shared_future<TaskResult> SystemReport::start(Sources sources, const QString &file) {
    auto state = std::make_shared<ReportState>();
    state->sources = std::move(sources);
    state->file = file;
    std::shared_future<TaskResult> end = state->end.get_future().share();

    // The sections job goes first: on a pool of one thread the writer must not hold the
    // only thread while the job it waits for is still queued.
    QThreadPool::globalInstance()->start([state] { sectionsJob(*state); });
    auto rows1 = std::make_shared<std::jthread>(
        labelledThread("LKGCD1", [state] { rowJob(*state, LoadedKextRows::Half::First); }));
    auto rows2 = std::make_shared<std::jthread>(
        labelledThread("LKGCD2", [state] { rowJob(*state, LoadedKextRows::Half::Second); }));
    QThreadPool::globalInstance()->start(
        [state, rows1, rows2] { writerJob(*state, *rows1, *rows2); });
    return end;
}

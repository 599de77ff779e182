#include "loaded/SystemReport.h"

#include "exec/Tr.h"
#include "loaded/ExtraKextTable.h"
#include "loaded/ReportOverview.h"

#include <QSaveFile>
#include <QThread>
#include <QThreadPool>
#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

namespace {

// One report's shared state. Each job writes only its own part and then raises its
// flag; the writer reads a part only after its flag is up.
struct ReportState {
    SystemReport::Sources sources;
    QString file;
    SystemReport::EndHandler onEnd;
    std::promise<SystemReport::End> end;

    QString list;
    LoadedKextRows first;
    LoadedKextRows second;
    std::atomic<bool> listDone{false};
    std::atomic<bool> abandoned{false};
    std::atomic<bool> kext1Done{false};
    std::atomic<bool> kext2Done{false};
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
        state.abandoned = true;
        return;
    }
    state.list = ReportOverview::sections(software, hardware) + *extra;
    state.listDone = true;
}

void rowJob(ReportState &state, LoadedKextRows::Half half) {
    const QString listing =
        runTool(state, SystemReport::kextstatTool(state.sources.paths), QStringList());
    LoadedKextRows rows =
        LoadedKextRows::build(listing, half, state.sources.pathOf, state.sources.probe);
    if (half == LoadedKextRows::Half::First) {
        state.first = std::move(rows);
        state.kext1Done = true;
    } else {
        state.second = std::move(rows);
        state.kext2Done = true;
    }
}

// A row job's own thread, named like the serial queue it stands for so that it can be
// told apart in a debugger or a process listing.
std::jthread labelledThread(const char *label, std::function<void()> job) {
    return std::jthread([label, job = std::move(job)] {
        QThread::currentThread()->setObjectName(QString::fromLatin1(label));
        pthread_setname_np(pthread_self(), label);
        job();
    });
}

bool allDone(const ReportState &state) {
    return state.listDone && state.kext1Done && state.kext2Done;
}

SystemReport::End writeReport(ReportState &state) {
    state.list += LoadedKextRows::section(state.first, state.second);
    QSaveFile file(state.file);
    bool written = file.open(QIODevice::WriteOnly);
    if (written) {
        file.write(state.list.toUtf8());
        written = file.commit();
    }
    return {SystemReport::Outcome::Saved, kkTr("Saved."), written};
}

void writerJob(ReportState &state, std::jthread &rows1, std::jthread &rows2) {
    using namespace std::chrono_literals;
    while (!allDone(state) && !state.abandoned)
        std::this_thread::sleep_for(100ms);
    // An abandoned report writes nothing; its row jobs still end on their own.
    rows1.join();
    rows2.join();
    const SystemReport::End end =
        state.abandoned ? SystemReport::End{SystemReport::Outcome::Abandoned,
                                            ExtraKextTable::bothFoldersMessage(), false}
                        : writeReport(state);
    if (state.onEnd)
        state.onEnd(end);
    state.end.set_value(end);
}

} // namespace

QString SystemReport::profilerTool(const SystemPaths &paths) {
    return paths.system(QStringLiteral("/usr/sbin/system_profiler"));
}

QString SystemReport::kextstatTool(const SystemPaths &paths) {
    return paths.system(QStringLiteral("/usr/sbin/kextstat"));
}

std::shared_future<SystemReport::End> SystemReport::start(Sources sources, const QString &file,
                                                          EndHandler onEnd) {
    auto state = std::make_shared<ReportState>();
    state->sources = std::move(sources);
    state->file = file;
    state->onEnd = std::move(onEnd);
    std::shared_future<End> end = state->end.get_future().share();

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

#include "BenchRun.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>
#include <vector>

extern char **environ;

namespace bench {
namespace {

// Google Benchmark's console output, plus each run's wall time kept for the ratios.
class KeepingReporter : public benchmark::ConsoleReporter {
public:
    // Colours only on a terminal: tools/bench.sh reads the rows from a pipe.
    KeepingReporter() : ConsoleReporter(isatty(STDOUT_FILENO) ? OO_Defaults : OO_Tabular) {}
    std::map<std::string, double> times;
    void ReportRuns(const std::vector<Run> &runs) override {
        for (const Run &each : runs) {
            // With repetitions the median, reported after them, is the time kept.
            const bool median =
                each.run_type == Run::RT_Aggregate && each.aggregate_name == "median";
            if ((each.run_type != Run::RT_Iteration && !median) || each.error_occurred)
                continue;
            const double perIteration = each.real_accumulated_time / double(each.iterations);
            // Keyed by name and arguments only ("BM_Rows/256"), without the options.
            const std::string &args = each.run_name.args;
            times[each.run_name.function_name + (args.empty() ? "" : "/" + args)] =
                perIteration * 1000.0;
        }
        ConsoleReporter::ReportRuns(runs);
    }
};

QString self; // this program, for the runs that measure memory

double now() {
    timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return double(t.tv_sec) * 1000.0 + double(t.tv_nsec) / 1e6;
}

} // namespace

std::map<std::string, double> run(int argc, char **argv) {
    // Started by its path, never looked up by name: the copy that measures memory is
    // started from the same path, made absolute.
    if (std::strchr(argv[0], '/'))
        self = QFileInfo(QFile::decodeName(argv[0])).absoluteFilePath();
    if (argc >= 4 && !std::strcmp(argv[1], "--kk-peak-of")) {
        QStringList args;
        for (int i = 4; i < argc; ++i)
            args << QString::fromLocal8Bit(argv[i]);
        timeChild(QString::fromLocal8Bit(argv[3]), args);
        rusage usage{};
        getrusage(RUSAGE_CHILDREN, &usage);
        QFile result(QString::fromLocal8Bit(argv[2]));
        result.open(QIODevice::WriteOnly);
        result.write(QByteArray::number(double(usage.ru_maxrss) / 1024.0)); // KiB on Linux
        result.close();
        std::exit(0);
    }
    benchmark::Initialize(&argc, argv);
    KeepingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return reporter.times;
}

double timeChild(const QString &program, const QStringList &args, const QStringList &environment) {
    std::vector<QByteArray> storage{QFile::encodeName(program)};
    for (const QString &arg : args)
        storage.push_back(arg.toLocal8Bit());
    std::vector<char *> argv;
    for (QByteArray &each : storage)
        argv.push_back(each.data());
    argv.push_back(nullptr);
    std::vector<QByteArray> envStorage;
    for (const QString &each : environment)
        envStorage.push_back(each.toLocal8Bit());
    std::vector<char *> env;
    for (QByteArray &each : envStorage)
        env.push_back(each.data());
    for (char **each = environ; *each; ++each)
        env.push_back(*each);
    env.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    const double start = now();
    pid_t child = 0;
    const int failed = posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), env.data());
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    if (failed || waitpid(child, &status, 0) != child || !WIFEXITED(status) ||
        WEXITSTATUS(status) != 0) {
        std::fprintf(stderr, "%s did not run to a good end\n", argv[0]);
        std::exit(1);
    }
    return now() - start;
}

double peakMiB(const QString &program, const QStringList &args) {
    const QString result = scratch() + QStringLiteral("/peak");
    if (self.isEmpty()) {
        std::fprintf(stderr, "start the benchmark by its path to measure memory\n");
        std::exit(1);
    }
    timeChild(self, QStringList{QStringLiteral("--kk-peak-of"), result, program} + args);
    QFile file(result);
    return file.open(QIODevice::ReadOnly) ? file.readAll().toDouble() : 0;
}

void row(const QString &what, const QString &ours, const QString &floor, double ratio,
         const QString &goal, bool met) {
    const QString shown = ratio < 0 ? QStringLiteral("-") : QString::number(ratio, 'f', 2) + 'x';
    std::printf("KKROW|%s|%s|%s|%s|%s|%s\n", qPrintable(what), qPrintable(ours), qPrintable(floor),
                qPrintable(shown), qPrintable(goal), met ? "yes" : "no");
    std::fflush(stdout);
}

QString ms(double milliseconds) {
    return milliseconds < 10 ? QString::number(milliseconds, 'f', 2) + QStringLiteral(" ms")
                             : QString::number(milliseconds, 'f', 0) + QStringLiteral(" ms");
}

QString scratch() {
    // Always below /tmp: the material runs to hundreds of MiB.
    static QTemporaryDir dir(QStringLiteral("/tmp/kk-bench-XXXXXX"));
    return dir.path();
}

} // namespace bench

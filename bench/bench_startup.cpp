// From starting the program on a sandbox to its window's first frame, beside the same
// for a hello-world window; both on the offscreen platform, both ended at their first
// frame by the preloaded first_paint_exit library. The window is to be up within twice
// the hello-world's time.

#include "BenchRun.h"

#include <QDir>
#include <benchmark/benchmark.h>

namespace {

QStringList environment() {
    const QString home = bench::scratch() + QStringLiteral("/home");
    QDir().mkpath(home);
    return {QStringLiteral("QT_QPA_PLATFORM=offscreen"),
            QStringLiteral("LD_PRELOAD=" KK_PAINT_HOOK),
            "HOME=" + home,
            "XDG_CONFIG_HOME=" + home + "/.config",
            "XDG_DATA_HOME=" + home + "/.local/share",
            "XDG_CACHE_HOME=" + home + "/.cache"};
}

const QString &sandbox() {
    static const QString made = [] {
        const QString root = bench::scratch() + QStringLiteral("/mac");
        bench::timeChild(QStringLiteral(KK_PROGRAM),
                         {QStringLiteral("sandbox"), QStringLiteral("create"), root});
        return root;
    }();
    return made;
}

void BM_FirstFrameOurs(benchmark::State &state) {
    const QStringList args{QStringLiteral("--root"), sandbox()};
    const QStringList env = environment();
    for (auto _ : state)
        state.SetIterationTime(bench::timeChild(QStringLiteral(KK_PROGRAM), args, env) / 1000);
}
BENCHMARK(BM_FirstFrameOurs)->Iterations(10)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_FirstFrameHello(benchmark::State &state) {
    const QStringList env = environment();
    for (auto _ : state)
        state.SetIterationTime(bench::timeChild(QStringLiteral(KK_HELLO), {}, env) / 1000);
}
BENCHMARK(BM_FirstFrameHello)->Iterations(10)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv) {
    auto t = bench::run(argc, argv);
    const double ours = t["BM_FirstFrameOurs"], hello = t["BM_FirstFrameHello"];
    if (ours > 0 && hello > 0)
        bench::row(QStringLiteral("start to first frame (offscreen, sandbox)"), bench::ms(ours),
                   QStringLiteral("hello-world window ") + bench::ms(hello), ours / hello,
                   QStringLiteral("<= 2x hello-world"), ours <= 2 * hello);
}

// Unpacking an archive of 600 kexts and one of 6,000, each with one kext in twenty a
// plug-in of the same name as all the others (30 and 300 of them), which the unpacker
// must tell apart by suffixes. Ten times the kexts is to cost at most twelve times the
// time.

#include "BenchRun.h"
#include "KextTree.h"
#include "mkext/MkextBuiltinTool.h"

#include <QDir>
#include <benchmark/benchmark.h>
#include <map>

namespace {

const QString &archive(int kexts) {
    static std::map<int, QString> made;
    QString &path = made[kexts];
    if (!path.isEmpty())
        return path;
    const QString folder = bench::scratch() + QStringLiteral("/scale%1/Extensions").arg(kexts);
    const int plugIns = kexts / 20;
    for (int i = 0; i < kexts - plugIns; ++i) {
        const QString bundle = folder + QStringLiteral("/K%1.kext").arg(i);
        const QString id = QStringLiteral("com.example.%1").arg(i);
        bench::writeKext(bundle, id, QStringLiteral("com.example.lib"));
        if (i < plugIns)
            bench::writeKext(bundle + QStringLiteral("/Contents/PlugIns/Same.kext"),
                             id + QStringLiteral(".same"), id);
    }
    path = folder + QStringLiteral(".mkext");
    const MkextToolOutput out = MkextBuiltinTool::build(path, folder, {});
    if (out.status != 0)
        qFatal("can't build %s: %s", qPrintable(path), qPrintable(out.err));
    return path;
}

void BM_UnpackKexts(benchmark::State &state) {
    const int kexts = int(state.range(0));
    const QString &mkext = archive(kexts);
    const QString target = bench::scratch() + QStringLiteral("/scale%1/out").arg(kexts);
    for (auto _ : state) {
        state.PauseTiming();
        QDir(target).removeRecursively();
        QDir().mkpath(target);
        state.ResumeTiming();
        const MkextToolOutput out =
            MkextBuiltinTool::unpack(QStringLiteral("x86_64"), target, mkext);
        if (out.status != 0 ||
            QDir(target).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size() != kexts)
            state.SkipWithError("the unpacked folder is not complete");
    }
}
BENCHMARK(BM_UnpackKexts)
    ->Arg(600)
    ->Arg(6000)
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

} // namespace

int main(int argc, char **argv) {
    auto t = bench::run(argc, argv);
    const double small = t["BM_UnpackKexts/600"], large = t["BM_UnpackKexts/6000"];
    if (small > 0 && large > 0)
        bench::row(QStringLiteral("mkext unpack, 6,000 vs 600 kexts"), bench::ms(large),
                   QStringLiteral("600 kexts ") + bench::ms(small), large / small,
                   QStringLiteral("<= 12x (linear)"), large <= 12 * small);
}

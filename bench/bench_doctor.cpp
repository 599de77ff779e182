// A doctor run over a volume of 3,000 kexts beside building the kext location index over
// the same folders: the doctor reads what the index reads (each Info.plist) and, for every
// kext, its files' owners and modes and its executable's Mach-O headers, and it is to
// stay within twice the index's time.

#include "KextTree.h"
#include "doctor/KextDoctor.h"
#include "volumes/KextLocationIndex.h"

#include <QTemporaryDir>
#include <benchmark/benchmark.h>

namespace {

using bench::writeFile;
using bench::writeKext;

constexpr int SleKexts = 2000;
constexpr int ExtraKexts = 900;
constexpr int PlugInsPerFamily = 1; // every tenth kext of S/L/E carries one plug-in

struct Volume {
    QTemporaryDir dir;
    QString root;
    int kexts = 0;
};

Volume &volume() {
    static Volume v = [] {
        Volume made;
        made.root = made.dir.filePath("Volumes/Mac");
        writeFile(made.root + "/System/Library/CoreServices/SystemVersion.plist",
                  "<plist version=\"1.0\"><dict><key>ProductVersion</key>"
                  "<string>10.6.8</string></dict></plist>");
        const QString base = QStringLiteral("com.example.");
        for (int i = 0; i < SleKexts; ++i) {
            const QString bundle =
                made.root + QStringLiteral("/System/Library/Extensions/K%1.kext").arg(i);
            writeKext(bundle, base + QString::number(i), base + QString::number(i / 10 * 10));
            if (i % 10 == 0) {
                for (int p = 0; p < PlugInsPerFamily; ++p)
                    writeKext(bundle + QStringLiteral("/Contents/PlugIns/P%1.kext").arg(p),
                              base + QStringLiteral("%1.p%2").arg(i).arg(p),
                              base + QString::number(i));
            }
        }
        for (int i = 0; i < ExtraKexts; ++i)
            writeKext(made.root + QStringLiteral("/Extra/Extensions/E%1.kext").arg(i),
                      QStringLiteral("org.example.%1").arg(i), base + QString::number(i));
        made.kexts = SleKexts + SleKexts / 10 * PlugInsPerFamily + ExtraKexts;
        return made;
    }();
    return v;
}

void BM_LocationIndex(benchmark::State &state) {
    Volume &v = volume();
    for (auto _ : state) {
        KextLocationIndex index{QString()};
        index.clear();
        index.addFolder(v.root + "/System/Library/Extensions");
        index.addFolder(v.root + "/Extra/Extensions");
        benchmark::DoNotOptimize(index.entries().size());
    }
    state.counters["kexts"] = v.kexts;
}
BENCHMARK(BM_LocationIndex)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();

void BM_Doctor(benchmark::State &state) {
    Volume &v = volume();
    for (auto _ : state) {
        const KextDoctor::Result result = KextDoctor::run({v.root, QString(), {}});
        benchmark::DoNotOptimize(result.findings.size());
    }
    state.counters["kexts"] = v.kexts;
}
BENCHMARK(BM_Doctor)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();

} // namespace

BENCHMARK_MAIN();

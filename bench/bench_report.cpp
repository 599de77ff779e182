// The system report's loaded-kext rows for 300 kexts, whose universal executables are
// 8 KiB, 256 KiB or 2 MiB, beside describing the same executables with one run of
// /usr/bin/file -b per kext; and the report's fixed cost (every job, the writer and the
// file, with tools that answer at once and no kexts). The executables are sparse past
// their headers: neither side reads more than the headers.

#include "BenchRun.h"
#include "KextTree.h"
#include "inspect/ArchitectureProbe.h"
#include "inspect/MachOWriter.h"
#include "loaded/SystemReport.h"
#include "volumes/KextLocationIndex.h"

#include <QDir>
#include <QFile>
#include <QtEndian>
#include <benchmark/benchmark.h>

namespace {

constexpr int Kexts = 300;
constexpr int SizesKiB[] = {8, 256, 2048};

struct Loaded {
    QString folder;
    QString kextstat;
    KextLocationIndex index{QString()};
};

// A universal file of `size` bytes: the fat header, then an i386 and an x86_64 slice
// filling the rest in two halves, each starting with its Mach-O header.
void writeUniversal(const QString &path, qint64 size) {
    const qint64 half = (size - 4096) / 2;
    QByteArray head(4096, '\0');
    const quint32 words[] = {0xcafebabe,    2,  MachOWriter::I386,   3, 4096,
                             quint32(half), 12, MachOWriter::X86_64, 3, quint32(4096 + half),
                             quint32(half), 12};
    for (size_t i = 0; i < std::size(words); ++i)
        qToBigEndian<quint32>(words[i], head.data() + 4 * i);
    QFile file(path);
    QDir().mkpath(path.section('/', 0, -2));
    if (!file.open(QIODevice::WriteOnly) || !file.resize(size))
        qFatal("can't write %s", qPrintable(path));
    file.write(head);
    file.write(MachOWriter::thin(MachOWriter::kextSlice(MachOWriter::I386)));
    file.seek(4096 + half);
    file.write(MachOWriter::thin(MachOWriter::kextSlice(MachOWriter::X86_64)));
}

Loaded &loaded(int sizeKiB) {
    static std::map<int, Loaded> made;
    Loaded &m = made[sizeKiB];
    if (!m.folder.isEmpty())
        return m;
    m.folder = bench::scratch() + QStringLiteral("/report%1").arg(sizeKiB);
    m.kextstat = QStringLiteral("Index Refs Address            Size       Wired      "
                                "Name (Version) <Linked Against>\n");
    for (int i = 0; i < Kexts; ++i) {
        const QString id = QStringLiteral("com.example.loaded%1").arg(i);
        const QString bundle = m.folder + QStringLiteral("/L%1.kext").arg(i);
        bench::writeFile(bundle + "/Contents/Info.plist", bench::infoPlist(id, "L", "x"));
        writeUniversal(bundle + QStringLiteral("/Contents/MacOS/L%1").arg(i), sizeKiB * 1024);
        m.kextstat += QString::asprintf("%5d %4d %#-18llx %#-10x %#-10x %s (1.0.0)\n", i + 1, 0,
                                        0xffffff7f80000000ULL + i * 0x10000ULL, 0x5000, 0x5000,
                                        qPrintable(id));
    }
    m.index.addFolder(m.folder);
    return m;
}

void BM_ReportRows(benchmark::State &state) {
    const Loaded &m = loaded(int(state.range(0)));
    const auto pathOf = [&m](const QString &id) { return m.index.findPath(id); };
    const auto probe = [](const QString &kext) { return ArchitectureProbe().probeText(kext); };
    for (auto _ : state) {
        const auto first =
            LoadedKextRows::build(m.kextstat, LoadedKextRows::Half::First, pathOf, probe);
        const auto second =
            LoadedKextRows::build(m.kextstat, LoadedKextRows::Half::Second, pathOf, probe);
        const QString section = LoadedKextRows::section(first, second);
        if (!section.contains(QStringLiteral("x86_64 i386")))
            state.SkipWithError("no architectures in the rows");
    }
}
BENCHMARK(BM_ReportRows)->Arg(8)->Arg(256)->Arg(2048)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_FileSpawn(benchmark::State &state) {
    const Loaded &m = loaded(int(state.range(0)));
    for (auto _ : state) {
        for (const QString &kext : m.index.entries())
            bench::timeChild(QStringLiteral("/usr/bin/file"),
                             {QStringLiteral("-b"), ArchitectureProbe::contentsExecutable(kext)});
    }
}
BENCHMARK(BM_FileSpawn)
    ->Arg(8)
    ->Arg(256)
    ->Arg(2048)
    ->Iterations(2)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void BM_ReportFixedCost(benchmark::State &state) {
    const QString root = bench::scratch() + QStringLiteral("/report-root");
    QDir().mkpath(root);
    const QString header = loaded(8).kextstat.section('\n', 0, 0) + '\n';
    SystemReport::Sources sources{
        SystemPaths(root),
        [header](const QString &tool, const QStringList &) -> std::optional<QString> {
            return tool.endsWith(QStringLiteral("kextstat")) ? header : QString();
        },
        [](const QString &) { return QString(); }, [](const QString &) { return QString(); }};
    for (auto _ : state) {
        if (!SystemReport::start(sources, root + QStringLiteral("/report.txt")).get().ok)
            state.SkipWithError("the report failed");
    }
}
BENCHMARK(BM_ReportFixedCost)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace

int main(int argc, char **argv) {
    auto t = bench::run(argc, argv);
    for (const int size : SizesKiB) {
        const std::string arg = QStringLiteral("/%1").arg(size).toStdString();
        const double ours = t["BM_ReportRows" + arg], file = t["BM_FileSpawn" + arg];
        if (ours > 0 && file > 0)
            bench::row(QStringLiteral("report rows, 300 kexts of %1 KiB").arg(size),
                       bench::ms(ours), QStringLiteral("file -b per kext ") + bench::ms(file),
                       file / ours, QStringLiteral(">= 20x faster"), file >= 20 * ours);
    }
    if (const double fixed = t["BM_ReportFixedCost"]; fixed > 0)
        bench::row(QStringLiteral("report's fixed cost (no kexts)"), bench::ms(fixed),
                   QStringLiteral("-"), -1, QStringLiteral("< 10 ms (no 0.1 s polling)"),
                   fixed < 10);
}

// Build and unpack of a 50 MiB folder of kexts (25 kexts, each with a 2 MiB universal
// executable of i386 and x86_64 code), with zlib's deflate and inflate of the same
// executables on one thread for comparison. Throughput counts the folder's (or the
// unpacked) bytes. The peak memory of a build is that of the program's own `mkext build`,
// beside what the program takes to print its version.

#include "BenchRun.h"
#include "mkext/MkextBuiltinTool.h"
#include "mkext/ZlibCodec.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QtEndian>
#include <benchmark/benchmark.h>

namespace {

constexpr int KextCount = 25;
constexpr qsizetype SliceSize = qsizetype(1) << 20;

struct Material {
    QString folder;
    QString archive;
    QByteArray executables; // every executable file, back to back
    qsizetype x86_64Bytes = 0;
};

// Machine code is neither random nor repetitive: tokens from a small vocabulary with
// a skewed choice compress about as well as real kexts (roughly 2:1 to 3:1).
QByteArray codeLike(qsizetype size, quint32 seed) {
    QRandomGenerator generator(seed);
    QList<quint32> vocabulary(512);
    for (quint32 &token : vocabulary)
        token = generator.generate();
    QByteArray out(size, Qt::Uninitialized);
    for (qsizetype i = 0; i + 4 <= size; i += 4) {
        const int pick = int(generator.bounded(512) * generator.bounded(512) / 512);
        qToLittleEndian<quint32>(vocabulary[pick], out.data() + i);
    }
    return out;
}

QByteArray word(quint32 value) {
    QByteArray bytes(4, '\0');
    qToBigEndian<quint32>(value, bytes.data());
    return bytes;
}

QByteArray universal(const QByteArray &intel32, const QByteArray &intel64) {
    QByteArray out = word(0xcafebabe) + word(2);
    out += word(7) + word(3) + word(4096) + word(quint32(intel32.size())) + word(12);
    out += word(0x01000007) + word(3) + word(quint32(4096 + intel32.size())) +
           word(quint32(intel64.size())) + word(12);
    out.append(4096 - out.size(), '\0');
    return out + intel32 + intel64;
}

Material &material() {
    static Material m = [] {
        Material made;
        made.folder = bench::scratch() + QStringLiteral("/mkext/Extensions");
        made.archive = bench::scratch() + QStringLiteral("/mkext/Extensions.mkext");
        for (int i = 0; i < KextCount; ++i) {
            const QString name = QStringLiteral("Bench%1").arg(i);
            const QString contents = made.folder + "/" + name + ".kext/Contents";
            QDir().mkpath(contents + QStringLiteral("/MacOS"));
            QFile info(contents + QStringLiteral("/Info.plist"));
            info.open(QIODevice::WriteOnly);
            info.write(QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist "
                                      "version=\"1.0\"><dict><key>CFBundleIdentifier</key>"
                                      "<string>com.example.%1</string><key>CFBundleExecutable"
                                      "</key><string>%1</string><key>CFBundleVersion</key>"
                                      "<string>1.0</string></dict></plist>\n")
                           .arg(name)
                           .toUtf8());
            // A Mach-O header in front of each slice, so the slices are recognised.
            const QByteArray i386 =
                QByteArray::fromHex("cefaedfe0700000003000000") + codeLike(SliceSize - 12, 2 * i);
            const QByteArray x64 = QByteArray::fromHex("cffaedfe0700000103000000") +
                                   codeLike(SliceSize - 12, 2 * i + 1);
            const QByteArray file = universal(i386, x64);
            QFile code(contents + QStringLiteral("/MacOS/") + name);
            code.open(QIODevice::WriteOnly);
            code.write(file);
            made.executables += file;
            made.x86_64Bytes += x64.size();
        }
        return made;
    }();
    return m;
}

void BM_MkextBuild(benchmark::State &state) {
    Material &m = material();
    for (auto _ : state) {
        const MkextToolOutput out = MkextBuiltinTool::build(m.archive, m.folder, {});
        if (out.status != 0)
            state.SkipWithError(qPrintable(out.err));
    }
    state.SetBytesProcessed(state.iterations() * m.executables.size());
}

void BM_MkextUnpack(benchmark::State &state) {
    Material &m = material();
    if (!QFile::exists(m.archive))
        MkextBuiltinTool::build(m.archive, m.folder, {});
    int run = 0;
    for (auto _ : state) {
        state.PauseTiming();
        const QString target = bench::scratch() + QStringLiteral("/mkext/out%1").arg(run++);
        QDir().mkpath(target);
        state.ResumeTiming();
        const MkextToolOutput out =
            MkextBuiltinTool::unpack(QStringLiteral("x86_64"), target, m.archive);
        if (out.status != 0)
            state.SkipWithError(qPrintable(out.err));
        state.PauseTiming();
        QDir(target).removeRecursively();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * m.x86_64Bytes);
}

void BM_ZlibDeflate(benchmark::State &state) {
    const QByteArray &plain = material().executables;
    for (auto _ : state)
        benchmark::DoNotOptimize(ZlibCodec::deflate(plain));
    state.SetBytesProcessed(state.iterations() * plain.size());
}

void BM_ZlibInflate(benchmark::State &state) {
    const QByteArray &plain = material().executables;
    const QByteArray packed = ZlibCodec::deflate(plain);
    state.counters["ratio"] = double(plain.size()) / double(packed.size());
    for (auto _ : state)
        benchmark::DoNotOptimize(ZlibCodec::inflate(packed, plain.size()));
    state.SetBytesProcessed(state.iterations() * plain.size());
}

// Peak resident memory of the program building the archive, less that of the program
// printing its version, in MiB.
double buildMemoryMiB() {
    const QString program = QStringLiteral(KK_PROGRAM);
    const double startUp = bench::peakMiB(program, {QStringLiteral("--version")});
    return bench::peakMiB(program, {QStringLiteral("mkext"), QStringLiteral("build"),
                                    bench::scratch() + QStringLiteral("/mkext/peak.mkext"),
                                    material().folder}) -
           startUp;
}

} // namespace

BENCHMARK(BM_MkextBuild)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_MkextUnpack)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_ZlibDeflate)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_ZlibInflate)->Unit(benchmark::kMillisecond)->UseRealTime();

int main(int argc, char **argv) {
    auto t = bench::run(argc, argv);
    const Material &m = material();
    const double mib = double(m.executables.size()) / (1 << 20);
    if (const double build = t["BM_MkextBuild"], deflate = t["BM_ZlibDeflate"];
        build > 0 && deflate > 0)
        bench::row(QStringLiteral("mkext build, %1 MiB folder").arg(qRound(mib)), bench::ms(build),
                   QStringLiteral("zlib deflate ") + bench::ms(deflate), deflate / build,
                   QStringLiteral(">= 1.6x zlib's speed"), deflate >= 1.6 * build);
    const double memory = buildMemoryMiB();
    const double archive =
        double(QFileInfo(bench::scratch() + QStringLiteral("/mkext/peak.mkext")).size()) /
        (1 << 20);
    const double kext = mib / KextCount;
    bench::row(
        QStringLiteral("mkext build, peak memory above start-up"),
        QString::number(memory, 'f', 1) + QStringLiteral(" MiB"),
        QStringLiteral("folder %1 MiB, archive %2 MiB").arg(mib, 0, 'f', 0).arg(archive, 0, 'f', 1),
        memory / mib, QStringLiteral("<= archive + 8 kexts (16 MiB)"),
        memory <= archive + 8 * kext);
    const double unpack = t["BM_MkextUnpack"], inflate = t["BM_ZlibInflate"];
    if (unpack > 0 && inflate > 0) {
        const double ours = double(m.x86_64Bytes) / (1 << 20) / unpack * 1000;
        const double zlib = mib / inflate * 1000;
        bench::row(QStringLiteral("mkext unpack throughput"),
                   QString::number(ours, 'f', 0) + QStringLiteral(" MiB/s"),
                   QStringLiteral("zlib inflate %1 MiB/s").arg(zlib, 0, 'f', 0), ours / zlib,
                   QStringLiteral(">= 0.9x zlib's speed"), ours >= 0.9 * zlib);
    }
}

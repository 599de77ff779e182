// Build and unpack of a 50 MiB folder of kexts (25 kexts, each with a 2 MiB universal
// executable of i386 and x86_64 code), with zlib's deflate and inflate of the same
// executables for comparison. Throughput counts the folder's (or the unpacked) bytes.

#include "mkext/MkextBuiltinTool.h"
#include "mkext/ZlibCodec.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtEndian>
#include <benchmark/benchmark.h>

namespace {

constexpr int KextCount = 25;
constexpr qsizetype SliceSize = qsizetype(1) << 20;

struct Material {
    QTemporaryDir dir;
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
        made.folder = made.dir.filePath(QStringLiteral("Extensions"));
        made.archive = made.dir.filePath(QStringLiteral("Extensions.mkext"));
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
        const QString target = m.dir.filePath(QStringLiteral("out%1").arg(run++));
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

} // namespace

BENCHMARK(BM_MkextBuild)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_MkextUnpack)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_ZlibDeflate)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_ZlibInflate)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_MAIN();

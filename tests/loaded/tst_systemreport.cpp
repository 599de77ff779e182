#include "TestScripts.h"
#include "exec/ProcessRunner.h"
#include "loaded/SystemReport.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QMutex>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

using namespace std::chrono_literals;

// The whole report, written by its concurrent jobs from real runs of stand-in tools
// on a sandbox root, compared byte for byte with the expected file.
class TestSystemReport : public QObject {
    Q_OBJECT
private slots:
    void wholeReport();
    void unwritableFile();
};

namespace {

QByteArray readAll(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Kexts of the fixture listing that the index knows, and what the file-type tool says
// about each one's executable.
const QHash<QString, QString> knownPaths{
    {"com.apple.kpi.bsd", "/System/Library/Extensions/System.kext/PlugIns/BSDKernel.kext"},
    {"com.example.A", "/Extra/Extensions/A.kext"},
    {"com.example.A.P1", "/Extra/Extensions/A.kext/Contents/PlugIns/P1.kext"},
    {"com.example.B", "/Extra/Extensions/B.kext"},
    {QStringLiteral("org.bücher.Treiber"),
     QStringLiteral("/System/Library/Extensions/Bücher Treiber.kext")},
    {"com.example.NoVersion", "/System/Library/Extensions/NoVersion.kext"},
};
const QHash<QString, QString> probeTexts{
    {knownPaths["com.apple.kpi.bsd"],
     "Mach-O universal binary with 2 architectures\nX (for architecture x86_64):\tMach-O 64-bit "
     "kext bundle x86_64\nX (for architecture i386):\tMach-O object i386\n"},
    {knownPaths["com.example.A"], "Mach-O 64-bit kext bundle x86_64\n"},
    {knownPaths["com.example.A.P1"], "Mach-O object i386\n"},
    {knownPaths["com.example.B"], ""},
    {knownPaths[QStringLiteral("org.bücher.Treiber")],
     "Mach-O universal binary with 2 architectures\nX (for architecture ppc):\tMach-O object "
     "ppc\nX (for architecture i386):\tMach-O object i386\n"},
    {knownPaths["com.example.NoVersion"], "Mach-O 64-bit kext bundle x86_64\n"},
};

// A sandbox Mac whose system_profiler and kextstat print the fixtures.
struct Sandbox {
    QTemporaryDir dir;
    QString root = dir.filePath(QStringLiteral("root"));
    QMutex probeLock;
    QSet<QString> probeThreads;
    int probes = 0;

    Sandbox() {
        const QDir sbin(root + QStringLiteral("/usr/sbin"));
        QDir().mkpath(sbin.path());
        const QByteArray fixtures = KK_FIXTURES;
        writeScript(sbin, QStringLiteral("system_profiler"),
                    "case \"$*\" in\n"
                    "SPSoftwareDataType) cat '" +
                        fixtures +
                        "/system_profiler/software-10.6.txt' ;;\n"
                        "'SPHardwareDataType -detailLevel mini') cat '" +
                        fixtures + "/system_profiler/hardware-mini.txt' ;;\nesac\n");
        writeScript(sbin, QStringLiteral("kextstat"),
                    "cat '" + fixtures + "/kextstat/kextstat-report.txt'\n");
        const QString base = root + QStringLiteral("/Extra/Extensions");
        QDir().mkpath(base + QStringLiteral("/A.kext/Contents/PlugIns/P1.kext"));
        QDir().mkpath(base + QStringLiteral("/A.kext/Contents/PlugIns/P2.kext"));
        QDir().mkpath(base + QStringLiteral("/B.kext/Contents"));
    }

    SystemReport::Sources sources() {
        return {SystemPaths(root), ProcessRunner::output,
                [](const QString &id) { return knownPaths.value(id); },
                [this](const QString &path) {
                    QMutexLocker lock(&probeLock);
                    probeThreads << QThread::currentThread()->objectName();
                    ++probes;
                    return probeTexts.value(path);
                }};
    }
};

SystemReport::End waitFor(const std::shared_future<SystemReport::End> &end) {
    if (end.wait_for(20s) != std::future_status::ready)
        qFatal("the report did not end");
    return end.get();
}

} // namespace

// Two reports at once, so that one report's state cannot leak into the other's file.
void TestSystemReport::wholeReport() {
    Sandbox sandbox;
    const QString file = sandbox.dir.filePath(QStringLiteral("Jörg's Mac Pro.txt"));
    const QString other = sandbox.dir.filePath(QStringLiteral("other.txt"));
    int ends = 0;
    const auto firstEnd = SystemReport::start(sandbox.sources(), file,
                                              [&ends](const SystemReport::End &) { ++ends; });
    const auto otherEnd = SystemReport::start(sandbox.sources(), other);
    const SystemReport::End end = waitFor(firstEnd);
    QCOMPARE(end.outcome, SystemReport::Outcome::Saved);
    QCOMPARE(end.message, QStringLiteral("Saved."));
    QVERIFY(end.written);
    QCOMPARE(ends, 1);
    const QByteArray expected = readAll(QStringLiteral(KK_FIXTURES "/report/expected-report.txt"));
    QCOMPARE(readAll(file), expected);
    QVERIFY(waitFor(otherEnd).written);
    QCOMPARE(readAll(other), expected);
    // Both halves of the rows ran, each on its own labelled thread.
    QCOMPARE(sandbox.probes, 12);
    QCOMPARE(sandbox.probeThreads, (QSet<QString>{"LKGCD1", "LKGCD2"}));
}

void TestSystemReport::unwritableFile() {
    Sandbox sandbox;
    const QString file = sandbox.dir.filePath(QStringLiteral("missing folder/report.txt"));
    const SystemReport::End end = waitFor(SystemReport::start(sandbox.sources(), file));
    // The window says "Saved." whatever happened; the command line reads `written`.
    QCOMPARE(end.message, QStringLiteral("Saved."));
    QVERIFY(!end.written);
}

QTEST_GUILESS_MAIN(TestSystemReport)
#include "tst_systemreport.moc"

#include "TestScripts.h"
#include "exec/ProcessRunner.h"
#include "loaded/SystemReport.h"

#include <QDir>
#include <QFile>
#include <QMutex>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

using namespace std::chrono_literals;

namespace {

QByteArray readAll(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Kexts of the fixture listing that the index knows, and the processors the probe names
// in each one's executable (the report reads bare words).
const struct {
    const char *id, *path, *probe;
} known[] = {
    {"com.apple.kpi.bsd", "/System/Library/Extensions/System.kext/PlugIns/BSDKernel.kext",
     "x86_64 i386"},
    {"com.example.A", "/Extra/Extensions/A.kext", "x86_64"},
    {"com.example.A.P1", "/Extra/Extensions/A.kext/Contents/PlugIns/P1.kext", "i386"},
    {"com.example.B", "/Extra/Extensions/B.kext", ""},
    {"org.bücher.Treiber", "/System/Library/Extensions/Bücher Treiber.kext", "ppc i386"},
    {"com.example.NoVersion", "/System/Library/Extensions/NoVersion.kext", "x86_64"},
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
                [](const QString &id) {
                    for (const auto &kext : known) {
                        if (id == QString::fromUtf8(kext.id))
                            return QString::fromUtf8(kext.path);
                    }
                    return QString();
                },
                [this](const QString &path) {
                    QMutexLocker lock(&probeLock);
                    probeThreads << QThread::currentThread()->objectName();
                    ++probes;
                    for (const auto &kext : known) {
                        if (path == QString::fromUtf8(kext.path))
                            return QString::fromUtf8(kext.probe);
                    }
                    return QString();
                }};
    }
};

SystemReport::End waitFor(const std::shared_future<SystemReport::End> &end) {
    if (end.wait_for(20s) != std::future_status::ready)
        qFatal("the report did not end");
    return end.get();
}

} // namespace

// The whole report, written by its concurrent jobs from real runs of stand-in tools
// on a sandbox root, compared byte for byte with the expected file.
class TestSystemReport : public QObject {
    Q_OBJECT
private slots:
    // Three reports at once, so that one report's state cannot leak into another's file.
    void wholeReport() {
        Sandbox sandbox;
        const QString file = sandbox.dir.filePath(QStringLiteral("Jörg's Mac Pro.txt"));
        const QString other = sandbox.dir.filePath(QStringLiteral("other.txt"));
        int ends = 0;
        const auto firstEnd = SystemReport::start(sandbox.sources(), file,
                                                  [&ends](const SystemReport::End &) { ++ends; });
        const auto otherEnd = SystemReport::start(sandbox.sources(), other);
        // The window says "Saved." whatever happened; the command line reads `written`.
        const auto unwritable =
            SystemReport::start(sandbox.sources(), sandbox.dir.filePath("missing folder/r.txt"));
        const SystemReport::End end = waitFor(firstEnd);
        QCOMPARE(end.outcome, SystemReport::Outcome::Saved);
        QCOMPARE(end.message, QStringLiteral("Saved."));
        QVERIFY(end.written);
        QCOMPARE(ends, 1);
        const QByteArray expected =
            readAll(QStringLiteral(KK_FIXTURES "/report/expected-report.txt"));
        QCOMPARE(readAll(file), expected);
        QVERIFY(waitFor(otherEnd).written);
        QCOMPARE(readAll(other), expected);
        QCOMPARE(waitFor(unwritable).message, QStringLiteral("Saved."));
        QVERIFY(!waitFor(unwritable).written);
        // Both halves of the rows ran, each on its own labelled thread.
        QCOMPARE(sandbox.probes, 18);
        QCOMPARE(sandbox.probeThreads, (QSet<QString>{"LKGCD1", "LKGCD2"}));
    }
};

QTEST_GUILESS_MAIN(TestSystemReport)
#include "tst_systemreport.moc"

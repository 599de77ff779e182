#include "TestScripts.h"
#include "exec/ProcessRunner.h"
#include "loaded/ExtraKextTable.h"
#include "loaded/KextStatText.h"
#include "loaded/KextUnloader.h"
#include "loaded/LoadedKextList.h"
#include "loaded/LoadedKextRows.h"
#include "loaded/ReportOverview.h"
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

namespace {
QByteArray readAll(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString fixture(const QString &name) {
    return QString::fromUtf8(readAll(QStringLiteral(KK_FIXTURES "/") + name));
}

QString blanks(int count) {
    return QString(count, QLatin1Char(' '));
}

void touch(const QString &path) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    file.open(QIODevice::WriteOnly);
}

// One data row, its values in the order of the columns.
template <typename... T> void row(const char *tag, const T &...values) {
    (QTest::newRow(tag) << ... << values);
}

const QString header64 = QStringLiteral(
    "Index Refs Address            Size       Wired      Name (Version) <Linked Against>");
const QString softwareHead = QStringLiteral("Software:\n\n    System Software Overview:\n");
const QString hardwareHead = QStringLiteral("Hardware:\n\n    Hardware Overview:\n");

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
    QHash<QString, QString> pathOf, probeOf;
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
        for (const auto &kext : known) {
            pathOf.insert(QString::fromUtf8(kext.id), QString::fromUtf8(kext.path));
            probeOf.insert(QString::fromUtf8(kext.path), QString::fromUtf8(kext.probe));
        }
    }

    SystemReport::Sources sources() {
        return {SystemPaths(root), ProcessRunner::output,
                [this](const QString &id) { return pathOf.value(id); },
                [this](const QString &path) {
                    QMutexLocker lock(&probeLock);
                    probeThreads << QThread::currentThread()->objectName();
                    ++probes;
                    return probeOf.value(path);
                }};
    }
};

TaskResult waitFor(const std::shared_future<TaskResult> &end) {
    if (end.wait_for(20s) != std::future_status::ready)
        qFatal("the report did not end");
    return end.get();
}

} // namespace

// The rows of the kext status tool and the pieces of the report where their rules meet odd
// input; the whole report, written by its concurrent jobs from real runs of stand-in tools on
// a sandbox root, compared byte for byte with the expected file; and unload and reload over
// a stand-in root run that answers each tool with a given error text (none: the
// authorization was refused). The real root script unloads on the loaded kexts page and end
// to end.
class TestLoaded : public QObject {
    Q_OBJECT
private slots:
    void rows_data() {
        QTest::addColumn<QString>("output");
        QTest::addColumn<QStringList>("expected");

        const QStringList rows64{
            "com.apple.kpi.bsd (10.8.0)",           "com.apple.kpi.iokit (10.8.0)",
            "com.apple.iokit.IOACPIFamily (1.3.0)", "com.apple.driver.AppleACPIPlatform (1.3.6)",
            "org.voodoo.driver.VoodooHDA (2.7.2)",  "com.example.NoLinks (1.0)"};
        const QString listing64 = fixture("kextstat/kextstat-64bit.txt");
        QTest::newRow("64-bit kernel") << listing64 << rows64;
        QTest::newRow("64-bit, no final newline: the last kext is lost")
            << listing64.chopped(1) << rows64.first(5);
        QTest::newRow("32-bit kernel, narrower address column")
            << fixture("kextstat/kextstat-32bit.txt")
            << QStringList{"com.apple.kernel.6.0 (7.9.9)", "com.apple.iokit.IOACPIFamily (1.2.0)",
                           "com.apple.driver.AppleIntelCPUPowerManagement (76.2.0)"};

        const QString pad(52, QLatin1Char(' '));
        QTest::newRow("only the first \" <\" cuts") << header64 + "\n" + pad + "a.b (1) <3> <4>\n"
                                                    << QStringList{"a.b (1)"};
        QTest::newRow("line shorter than the column gives an empty row")
            << header64 + "\n    1    0\n" + pad + "c.d (2)\n"
            << QStringList{"", "c.d (2)"};
        QTest::newRow("unknown header: whole lines")
            << QStringLiteral("Id Name\n  1 a.b (1) <2>\n  2 c.d (2)\n")
            << QStringList{"  1 a.b (1)", "  2 c.d (2)"};
        QTest::newRow("header alone, nothing loaded") << header64 + "\n" << QStringList();
    }

    void rows() {
        QFETCH(QString, output);
        QFETCH(QStringList, expected);
        QCOMPARE(kextStatRows(output), expected);
    }

    void parts_data() {
        QTest::addColumn<QString>("row");
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<QString>("version");

        row("no version", "com.example.Bare", "com.example.Bare", "");
        row("version without closing parenthesis", "com.example.Cut (1.2", "com.example.Cut",
            "1.2");
        row("parenthesis inside the identifier", "com.ex)ample.Odd (3.0)", "com.ex)ample.Odd",
            "3.0");
    }

    void parts() {
        QFETCH(QString, row);
        QFETCH(QString, identifier);
        QFETCH(QString, version);
        const KextRowParts parts = kextRowParts(row);
        QCOMPARE(parts.identifier, identifier);
        QCOMPARE(parts.version, version);
        QCOMPARE(kextRowIdentifier(row), identifier);
    }

    void filter_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("expected");

        QTest::newRow("capitals match small letters")
            << "IOKIT"
            << QStringList{"com.apple.kpi.iokit (10.8.0)", "com.apple.iokit.IOACPIFamily (1.3.0)"};
        QTest::newRow("version numbers match")
            << "2.7" << QStringList{"org.voodoo.driver.VoodooHDA (2.7.2)"};
        QTest::newRow("no wildcards") << "com.*HDA" << QStringList();
    }

    void filter() {
        QFETCH(QString, text);
        QFETCH(QStringList, expected);
        LoadedKextList list;
        list.refresh(fixture("kextstat/kextstat-64bit.txt"));
        QCOMPARE(list.filtered(text), expected);
        // The filter reads the last refresh and never changes it; no text keeps every row.
        QCOMPARE(list.rows().size(), 6);
        QCOMPARE(list.filtered(QString()), list.rows());
    }

    void defaultFileName_data() {
        QTest::addColumn<QString>("software");
        QTest::addColumn<QString>("expected");

        QTest::newRow("10.6 overview")
            << fixture("system_profiler/software-10.6.txt") << QStringLiteral("Jörg's Mac Pro");
        row("fewer than six lines", softwareHead + "\n      A: 1\n      B: 2\n", "");
    }

    void defaultFileName() {
        QFETCH(QString, software);
        QFETCH(QString, expected);
        QCOMPARE(ReportOverview::defaultFileName(software), expected);
    }

    void overviewSections_data() {
        QTest::addColumn<QString>("software");
        QTest::addColumn<QString>("hardware");
        QTest::addColumn<QString>("expected");

        // Six-blank runs go wherever they are, non-overlapping from the left.
        QTest::newRow("deeper indentation keeps the rest")
            << softwareHead + "\n" + blanks(6) + "A\n" + blanks(8) + "B\n" + blanks(12) + "C\n"
            << hardwareHead + "\n" + blanks(10) + "D: 1" + blanks(7) + "x\n"
            << "1. Software Info:\nA\n  B\nC\n2. Hardware Info:\n    D: 1 x\n";
        QTest::newRow("user name and uptime dropped by position")
            << softwareHead + "\n1\n2\n3\n4\n5\nuser\n7\n8\nuptime\n10\n"
            << hardwareHead << "1. Software Info:\n1\n2\n3\n4\n5\n7\n8\n10\n2. Hardware Info:";
        row("short software: no line to drop", softwareHead + "\n1\n2\n", "",
            "1. Software Info:\n1\n2\n2. Hardware Info:");
        row("tools printed nothing", "", "", "1. Software Info:2. Hardware Info:");
    }

    void overviewSections() {
        QFETCH(QString, software);
        QFETCH(QString, hardware);
        QFETCH(QString, expected);
        QCOMPARE(ReportOverview::sections(software, hardware), expected);
    }

    void extraTable_data() {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QString>("expected");

        const QString heading = QStringLiteral("3. /Extra Kexts:\n");
        const QString header =
            QStringLiteral("Kext Name:") + blanks(4) + QStringLiteral("Plugins:\n");
        QTest::newRow("no Extra folders") << QStringList() << heading + header;
        // Names wider than the header widen the column; the plug-in folder's own
        // .DS_Store is listed, only the top level drops it.
        QTest::newRow("KextStore with a long non-ASCII name")
            << QStringList{QStringLiteral(
                               "Extra/KextStore/Jörg's Audio.kext/Contents/PlugIns/.DS_Store"),
                           "Extra/KextStore/FakeSMC.kext/Contents/PlugIns/Sensor.kext/",
                           "Extra/KextStore/Null.kext/"}
            << heading + QStringLiteral("Kext Name:") + blanks(11) + "Plugins:\n" + "FakeSMC.kext" +
                   blanks(9) + "Sensor.kext \n" + QStringLiteral("Jörg's Audio.kext") + blanks(4) +
                   ".DS_Store \n" + "Null.kext" + blanks(12) + "\n";
        QTest::newRow("loose file beside the kexts, top-level .DS_Store dropped")
            << QStringList{"Extra/Extensions/readme.txt", "Extra/Extensions/.DS_Store"}
            << heading + header + "readme.txt" + blanks(4) + "\n";
    }

    void extraTable() {
        QFETCH(QStringList, files);
        QFETCH(QString, expected);
        QTemporaryDir root;
        for (const QString &file : files) {
            if (file.endsWith(QLatin1Char('/')))
                QDir().mkpath(root.filePath(file));
            else
                touch(root.filePath(file));
        }
        const std::optional<QString> section = ExtraKextTable::section(SystemPaths(root.path()));
        QVERIFY(section);
        QCOMPARE(*section, expected);
    }

    // The header row and the kexts of the first half, then the second half: the whole report
    // splits an odd number of pieces; an even one must split the same way.
    void rowHalves_data() {
        QTest::addColumn<QString>("listing");
        QTest::addColumn<QStringList>("firstNames");
        QTest::addColumn<QStringList>("secondNames");

        const QString listing = fixture("kextstat/kextstat-64bit.txt");
        // 8 pieces (header, six kexts, empty end): lines 1-3 and 4-6.
        QTest::newRow("six kexts")
            << listing
            << QStringList{"Kext Name:", "com.apple.kpi.bsd", "com.apple.kpi.iokit",
                           "com.apple.iokit.IOACPIFamily"}
            << QStringList{"com.apple.driver.AppleACPIPlatform", "org.voodoo.driver.VoodooHDA",
                           "com.example.NoLinks"};
        QTest::newRow("one kext") << listing.section(QLatin1Char('\n'), 0, 1) + QLatin1Char('\n')
                                  << QStringList{"Kext Name:"} << QStringList{"com.apple.kpi.bsd"};
        QTest::newRow("nothing printed") << QString() << QStringList{"Kext Name:"} << QStringList();
    }

    void rowHalves() {
        QFETCH(QString, listing);
        QFETCH(QStringList, firstNames);
        QFETCH(QStringList, secondNames);
        QStringList looked;
        const auto pathOf = [&looked](const QString &id) {
            looked << id;
            return QString();
        };
        const auto probe = [](const QString &) { return QString(); };
        QCOMPARE(LoadedKextRows::build(listing, LoadedKextRows::Half::First, pathOf, probe).names,
                 firstNames);
        QCOMPARE(LoadedKextRows::build(listing, LoadedKextRows::Half::Second, pathOf, probe).names,
                 secondNames);
        QCOMPARE(looked, firstNames.mid(1) + secondNames);
    }

    // Three reports at once, so that one report's state cannot leak into another's file.
    void wholeReport() {
        Sandbox sandbox;
        const QString file = sandbox.dir.filePath(QStringLiteral("Jörg's Mac Pro.txt"));
        const QString other = sandbox.dir.filePath(QStringLiteral("other.txt"));
        const auto firstEnd = SystemReport::start(sandbox.sources(), file);
        const auto otherEnd = SystemReport::start(sandbox.sources(), other);
        // The window says "Saved." whatever happened; the command line tells the failure.
        const QString lost = sandbox.dir.filePath("missing folder/r.txt");
        const auto unwritable = SystemReport::start(sandbox.sources(), lost);
        QCOMPARE(waitFor(firstEnd), TaskResult::done(QStringLiteral("Saved.")));
        const QByteArray expected =
            readAll(QStringLiteral(KK_FIXTURES "/report/expected-report.txt"));
        QCOMPARE(readAll(file), expected);
        QCOMPARE(waitFor(otherEnd), TaskResult::done(QStringLiteral("Saved.")));
        QCOMPARE(readAll(other), expected);
        QCOMPARE(waitFor(unwritable), (TaskResult{true, "Saved.", "could not write " + lost, {}}));
        // Both halves of the rows ran, each on its own labelled thread.
        QCOMPARE(sandbox.probes, 18);
        QCOMPARE(sandbox.probeThreads, (QSet<QString>{"LKGCD1", "LKGCD2"}));
    }

    void unloaderSteps_data() {
        QTest::addColumn<bool>("reload");
        QTest::addColumn<QString>("kext"); // below the test folder
        QTest::addColumn<std::optional<QString>>("unloadAnswer");
        QTest::addColumn<std::optional<QString>>("loadAnswer");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<QString>("error");
        QTest::addColumn<QStringList>("calls");

        using A = std::optional<QString>;
        // Nothing there is a failure without a word.
        const bool skipped = false;
        const bool done = true;
        const bool failed = false;
        const QString busy = QStringLiteral("Failed to unload com.example.Busy - (libkern/kext) "
                                            "kext is in use or retained (cannot unload).\n");
        const QString unloadCall = QStringLiteral("kextunload [@/Jörg's Kext.kext]");
        const QString loadCall = QStringLiteral("kextload [@/Jörg's Kext.kext]");
        const QString kext = QStringLiteral("Jörg's Kext.kext");
        QTest::newRow("unload, nothing there")
            << false << "Gone.kext" << A("") << A("") << skipped << "" << QStringList();
        QTest::newRow("unload fails")
            << false << kext << A(busy) << A("") << failed << busy << QStringList{unloadCall};
        QTest::newRow("unload refused counts as done")
            << false << kext << A() << A("") << done << "" << QStringList{unloadCall};
        QTest::newRow("reload") << true << kext << A("") << A("") << done << ""
                                << QStringList{unloadCall, loadCall};
        QTest::newRow("reload, unload fails: no load")
            << true << kext << A(busy) << A("") << failed << busy << QStringList{unloadCall};
        QTest::newRow("reload, refused unload still loads")
            << true << kext << A() << A("") << done << "" << QStringList{unloadCall, loadCall};
        QTest::newRow("reload, load fails")
            << true << kext << A("") << A("not loadable\n") << failed << "not loadable\n"
            << QStringList{unloadCall, loadCall};
    }

    void unloaderSteps() {
        QFETCH(bool, reload);
        QFETCH(QString, kext);
        QFETCH(std::optional<QString>, unloadAnswer);
        QFETCH(std::optional<QString>, loadAnswer);
        QFETCH(bool, ok);
        QFETCH(QString, error);
        QFETCH(QStringList, calls);

        QTemporaryDir dir;
        QVERIFY(QDir().mkpath(dir.filePath(QStringLiteral("Jörg's Kext.kext"))));
        QStringList recorded;
        const KextUnloader unloader([&](const QString &command, const QString &argument) {
            recorded << command + " [" + argument + ']';
            return command == QLatin1String("kextunload") ? unloadAnswer : loadAnswer;
        });
        const QString path = dir.filePath(kext);
        QCOMPARE(reload ? unloader.reload(path) : unloader.unload(path),
                 (TaskResult{ok, error, {}, {}}));
        QCOMPARE(recorded, calls.replaceInStrings(QStringLiteral("@"), dir.path()));
    }
};

QTEST_GUILESS_MAIN(TestLoaded)
#include "tst_loaded.moc"

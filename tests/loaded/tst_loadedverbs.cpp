#include "CliRun.h"
#include "TestScripts.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

// The loaded, unload, reload and report verbs on the real binary over a sandbox root: their
// output, exit status and usage errors (an unload that works and one that fails, and the
// saved report, run end to end elsewhere).
class TestLoadedVerbs : public QObject {
    Q_OBJECT
private slots:
    void init() {
        m_dir = std::make_unique<QTemporaryDir>();
        m_root = m_dir->filePath(QStringLiteral("root"));
        const QDir sbin(m_root + QStringLiteral("/usr/sbin"));
        QDir().mkpath(sbin.path());
        QDir().mkpath(m_dir->filePath(QStringLiteral("home")));
        const QByteArray fixtures = KK_FIXTURES;
        writeScript(sbin, QStringLiteral("kextstat"),
                    "cat '" + fixtures + "/kextstat/kextstat-64bit.txt'\n");
        writeScript(sbin, QStringLiteral("system_profiler"), "exit 0\n");
        QDir().mkpath(m_root + QStringLiteral("/Extra/Extensions"));
        QDir().mkpath(m_root + QStringLiteral("/Jörg's.kext"));
    }

    void verbs_data() {
        QTest::addColumn<QStringList>("args"); // "@" stands for the sandbox root
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("out");
        QTest::addColumn<QString>("err"); // a part of standard error

        QTest::newRow("loaded, filter in capitals")
            << QStringList{"loaded", "--filter", "IOKIT"} << 0
            << "com.apple.kpi.iokit (10.8.0)\ncom.apple.iokit.IOACPIFamily (1.3.0)\nFound: 2\n"
            << "";
        QTest::newRow("loaded, stray word") << QStringList{"loaded", "x"} << 2 << ""
                                            << "unexpected words";
        QTest::newRow("unload, missing kext") << QStringList{"unload", "@/Gone.kext"} << 1 << ""
                                              << "does not exist";
        QTest::newRow("unload without path") << QStringList{"unload"} << 2 << ""
                                             << "needs exactly one path";
        QTest::newRow("reload, dry run prints both lines")
            << QStringList{"--dry-run", "reload", QStringLiteral("@/Jörg's.kext")} << 0
            << QStringLiteral("kextunload '@/Jörg'\\''s.kext'\nkextload '@/Jörg'\\''s.kext'\n")
            << "";
        // "+" makes Extra/KextStore beside Extra/Extensions first.
        QTest::newRow("report with both Extra folders")
            << QStringList{"+", "report", "@/report.txt"} << 1 << ""
            << "kextkeeper report: Both Extra/Extensions and Extra/KextStore found.\n";
        QTest::newRow("report into a missing folder")
            << QStringList{"report", "@/gone/report.txt"} << 1 << ""
            << "kextkeeper report: could not write @/gone/report.txt\n";
    }

    void verbs() {
        QFETCH(QStringList, args);
        QFETCH(int, status);
        QFETCH(QString, out);
        QFETCH(QString, err);
        if (args.first() == QLatin1String("+")) {
            args.removeFirst();
            QVERIFY(QDir().mkpath(m_root + QStringLiteral("/Extra/KextStore")));
        }
        const CliRun result = runKextKeeper(m_root, m_dir->filePath(QStringLiteral("home")),
                                            args.replaceInStrings(QStringLiteral("@"), m_root));
        QCOMPARE(result.status, status);
        QCOMPARE(result.out, out.replace(QLatin1Char('@'), m_root));
        QVERIFY2(result.err.contains(err.replace(QLatin1Char('@'), m_root)),
                 qPrintable(result.err));
        QVERIFY(!QFile::exists(m_root + QStringLiteral("/report.txt")));
    }

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_root;
};

QTEST_GUILESS_MAIN(TestLoadedVerbs)
#include "tst_loadedverbs.moc"

#include "TestScripts.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

// The loaded, unload, reload and report verbs on the real binary over a sandbox root: their
// output, exit status and usage errors (the happy unload and report run end to end elsewhere).
class TestLoadedVerbs : public QObject {
    Q_OBJECT
private slots:
    void init();
    void verbs_data();
    void verbs();

private:
    struct Run {
        int status;
        QString out;
        QString err;
    };
    Run run(const QStringList &args) const;

    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_root;
};

void TestLoadedVerbs::init() {
    m_dir = std::make_unique<QTemporaryDir>();
    m_root = m_dir->filePath(QStringLiteral("root"));
    const QDir sbin(m_root + QStringLiteral("/usr/sbin"));
    QDir().mkpath(sbin.path());
    QDir().mkpath(m_dir->filePath(QStringLiteral("home")));
    const QByteArray fixtures = KK_FIXTURES;
    writeScript(sbin, QStringLiteral("kextstat"),
                "cat '" + fixtures + "/kextstat/kextstat-64bit.txt'\n");
    writeScript(sbin, QStringLiteral("system_profiler"), "exit 0\n");
    writeScript(sbin, QStringLiteral("kextunload"),
                "case \"$1\" in *Busy*) echo 'Failed to unload com.example.Busy - "
                "(libkern/kext) kext is in use or retained (cannot unload).' >&2 ;; esac\n");
    writeScript(sbin, QStringLiteral("kextload"), "exit 0\n");
    for (const char *kext : {"Extra/Extensions/Busy.kext/Contents", "Jörg's.kext"})
        QDir().mkpath(m_root + '/' + QString::fromUtf8(kext));
}

TestLoadedVerbs::Run TestLoadedVerbs::run(const QStringList &args) const {
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("HOME"), m_dir->filePath(QStringLiteral("home")));
    process.setProcessEnvironment(env);
    process.start(QStringLiteral(KK_BINARY), QStringList{"--root", m_root} + args);
    if (!process.waitForFinished(30000))
        return {-1, {}, {}};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

void TestLoadedVerbs::verbs_data() {
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
    QTest::newRow("unload fails")
        << QStringList{"unload", "@/Extra/Extensions/Busy.kext"} << 1 << ""
        << "Failed to unload com.example.Busy - (libkern/kext) kext is in use or retained "
           "(cannot unload).\n";
    QTest::newRow("unload, missing kext") << QStringList{"unload", "@/Gone.kext"} << 1 << ""
                                          << "does not exist";
    QTest::newRow("unload without path") << QStringList{"unload"} << 2 << ""
                                         << "needs exactly one path";
    QTest::newRow("reload, unload fails")
        << QStringList{"reload", "@/Extra/Extensions/Busy.kext"} << 1 << ""
        << "Failed to unload com.example.Busy";
    QTest::newRow("reload, dry run prints both lines")
        << QStringList{"--dry-run", "reload", QStringLiteral("@/Jörg's.kext")} << 0
        << QStringLiteral("kextunload '@/Jörg'\\''s.kext'\nkextload '@/Jörg'\\''s.kext'\n") << "";
    QTest::newRow("report without file") << QStringList{"report"} << 2 << ""
                                         << "needs exactly one path";
    // "+" makes Extra/KextStore beside Extra/Extensions first.
    QTest::newRow("report with both Extra folders")
        << QStringList{"+", "report", "@/report.txt"} << 1 << ""
        << "kextkeeper report: Both Extra/Extensions and Extra/KextStore found.\n";
}

void TestLoadedVerbs::verbs() {
    QFETCH(QStringList, args);
    QFETCH(int, status);
    QFETCH(QString, out);
    QFETCH(QString, err);
    if (args.first() == QLatin1String("+")) {
        args.removeFirst();
        QVERIFY(QDir().mkpath(m_root + QStringLiteral("/Extra/KextStore")));
    }
    const Run result = run(args.replaceInStrings(QStringLiteral("@"), m_root));
    QCOMPARE(result.status, status);
    QCOMPARE(result.out, out.replace(QLatin1Char('@'), m_root));
    QVERIFY2(result.err.contains(err), qPrintable(result.err));
    QVERIFY(!QFile::exists(m_root + QStringLiteral("/report.txt")));
}

QTEST_GUILESS_MAIN(TestLoadedVerbs)
#include "tst_loadedverbs.moc"

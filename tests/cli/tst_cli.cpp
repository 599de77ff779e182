#include <QProcess>
#include <QTest>

// The global options and exit statuses of the command line, on the real binary.
class TestCli : public QObject {
    Q_OBJECT
private slots:
    void globalOptions_data();
    void globalOptions();
};

void TestCli::globalOptions_data() {
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("stdoutHas");
    QTest::addColumn<QString>("stderrHas");
    QTest::newRow("help") << QStringList{"--help"} << 0 << "--dry-run"
                          << "";
    QTest::newRow("version") << QStringList{"--version"} << 0 << "kextkeeper " KK_VERSION << "";
    QTest::newRow("unknown verb") << QStringList{"frobnicate"} << 2 << ""
                                  << "unknown verb frobnicate";
    QTest::newRow("unknown option") << QStringList{"--frob"} << 2 << ""
                                    << "unknown option --frob";
    QTest::newRow("root without folder") << QStringList{"--root"} << 2 << ""
                                         << "--root needs a folder";
}

void TestCli::globalOptions() {
    QFETCH(QStringList, args);
    QFETCH(int, status);
    QFETCH(QString, stdoutHas);
    QFETCH(QString, stderrHas);
    QProcess process;
    process.start(KK_BINARY, args);
    QVERIFY(process.waitForFinished(20000));
    QCOMPARE(process.exitCode(), status);
    QVERIFY2(QString::fromUtf8(process.readAllStandardOutput()).contains(stdoutHas),
             qPrintable(stdoutHas));
    QVERIFY2(QString::fromUtf8(process.readAllStandardError()).contains(stderrHas),
             qPrintable(stderrHas));
}

QTEST_GUILESS_MAIN(TestCli)
#include "tst_cli.moc"

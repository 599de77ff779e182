#include <QProcess>
#include <QTest>

// The verb's own layer on the real binary: its exit statuses and usage errors. What it
// prints for a good archive runs end to end, through the sandbox's mkextunpack.
class TstMkextVerb : public QObject {
    Q_OBJECT

private slots:
    void statusAndErrors_data() {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("err"); // the start of standard error
        QTest::newRow("list of a missing file")
            << QStringList{"mkext", "list", "/nonexistent/none.mkext"} << 1
            << "Can't open file /nonexistent/none.mkext.\n";
        const QString usage = QStringLiteral("kextkeeper mkext: ");
        QTest::newRow("no action") << QStringList{"mkext"} << 2 << usage;
        QTest::newRow("unknown action") << QStringList{"mkext", "pack", "x"} << 2 << usage;
        QTest::newRow("list without file") << QStringList{"mkext", "list"} << 2 << usage;
        QTest::newRow("unpack with two files")
            << QStringList{"mkext", "unpack", "a", "b"} << 2 << usage;
        QTest::newRow("build without folder")
            << QStringList{"mkext", "build", "out.mkext"} << 2 << usage;
        QTest::newRow("arch without value")
            << QStringList{"mkext", "build", "o", "f", "--arch"} << 2 << usage;
    }
    void statusAndErrors() {
        QFETCH(QStringList, args);
        QFETCH(int, status);
        QFETCH(QString, err);
        QProcess process;
        process.start(QStringLiteral(KK_BINARY), args);
        QVERIFY(process.waitForFinished(60000));
        const QString printed = QString::fromUtf8(process.readAllStandardError());
        QVERIFY2(printed.startsWith(err), qPrintable(printed));
        QCOMPARE(process.readAllStandardOutput(), QByteArray());
        QCOMPARE(process.exitCode(), status);
    }
};

QTEST_GUILESS_MAIN(TstMkextVerb)
#include "tst_mkextverb.moc"

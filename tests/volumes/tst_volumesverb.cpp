#include "TestScripts.h"
#include "volumes/SystemPaths.h"
#include "volumes/VolumeList.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

// `kextkeeper volumes` run as a real process over a sandbox root.
class TestVolumesVerb : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void listing_data();
    void listing();
    void badVersionIsUsageError_data();
    void badVersionIsUsageError();

private:
    struct Result {
        int status;
        QString out;
        QString err;
    };
    Result run(const QStringList &args);
    QTemporaryDir m_dir;
    QString m_root;
};

void TestVolumesVerb::initTestCase() {
    m_root = m_dir.path() + QStringLiteral("/root");
    const SystemPaths paths(m_root);
    for (const QString &folder :
         {QStringLiteral("Macintosh HD/System/Library/Extensions"),
          QStringLiteral("Macintosh HD/Extra/Extensions"),
          QStringLiteral("Boot's Ü/Extra/KextStore"),
          QStringLiteral("Boot's Ü/Extra/10.6/Extensions"), QStringLiteral("Backup/Documents")})
        QDir().mkpath(paths.volumesDir() + QLatin1Char('/') + folder);
    QDir().mkpath(paths.system(QStringLiteral("/usr/sbin")));
    const QByteArray fixtures = KK_FIXTURES "/diskutil/";
    writeScript(QDir(paths.system(QStringLiteral("/usr/sbin"))), QStringLiteral("diskutil"),
                "case \"$2\" in\n  */Macintosh\\ HD) cat '" + fixtures +
                    "info-startup.txt' ;;\n  *) cat '" + fixtures +
                    "info-other-volume.txt' ;;\nesac\n");
}

TestVolumesVerb::Result TestVolumesVerb::run(const QStringList &args) {
    QProcess process;
    process.start(QStringLiteral(KK_BINARY),
                  QStringList{QStringLiteral("--root"), m_root, QStringLiteral("volumes")} + args);
    process.waitForFinished(30000);
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

void TestVolumesVerb::listing_data() {
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QString>("macLine");
    QTest::addColumn<QString>("bootLine");

    QTest::newRow("version independent")
        << QStringList{} << "Macintosh HD\tstarted system\tS/L/E: yes\tExtra: yes"
        << "Boot's Ü\t-\tS/L/E: no\tExtra: yes";
    QTest::newRow("10.6") << QStringList{"--extra-version", "10.6"}
                          << "Macintosh HD\tstarted system\tS/L/E: yes\tExtra: no"
                          << "Boot's Ü\t-\tS/L/E: no\tExtra: yes";
}

void TestVolumesVerb::listing() {
    QFETCH(QStringList, args);
    QFETCH(QString, macLine);
    QFETCH(QString, bootLine);

    const Result result = run(args);
    QCOMPARE(result.status, 0);
    QCOMPARE(result.err, QString());
    // One line per listed volume, in the order of the volume list.
    const QStringList order = VolumeList::build(SystemPaths(m_root).volumesDir());
    QStringList expected;
    for (const QString &title : order)
        expected << (title == QLatin1String("Macintosh HD") ? macLine : bootLine);
    QCOMPARE(result.out, expected.join(QLatin1Char('\n')) + QLatin1Char('\n'));
    QCOMPARE(order.size(), 2);
}

void TestVolumesVerb::badVersionIsUsageError_data() {
    QTest::addColumn<QStringList>("args");
    QTest::newRow("unknown version") << QStringList{"--extra-version", "10.8"};
    QTest::newRow("missing value") << QStringList{"--extra-version"};
    QTest::newRow("stray word") << QStringList{"Macintosh HD"};
}

void TestVolumesVerb::badVersionIsUsageError() {
    QFETCH(QStringList, args);
    const Result result = run(args);
    QCOMPARE(result.status, 2);
    QVERIFY(result.out.isEmpty());
    QVERIFY(!result.err.isEmpty());
}

QTEST_GUILESS_MAIN(TestVolumesVerb)
#include "tst_volumesverb.moc"

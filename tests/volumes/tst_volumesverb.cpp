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
    void run_data();
    void run();

private:
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
                "[ \"$1\" = info ] || exit 1\ncase \"$2\" in\n  */Macintosh\\ HD) cat '" +
                    fixtures + "info-startup.txt' ;;\n  *) cat '" + fixtures +
                    "info-other-volume.txt' ;;\nesac\n");
}

void TestVolumesVerb::run_data() {
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<int>("status");
    QTest::addColumn<QStringList>("lines"); // the Macintosh HD line, then Boot's
    QTest::addColumn<QString>("err");

    QTest::newRow("version independent")
        << QStringList{} << 0
        << QStringList{"Macintosh HD\tstarted system\tS/L/E: yes\tExtra: yes",
                       "Boot's Ü\t-\tS/L/E: no\tExtra: yes"}
        << "";
    QTest::newRow("10.6") << QStringList{"--extra-version", "10.6"} << 0
                          << QStringList{"Macintosh HD\tstarted system\tS/L/E: yes\tExtra: no",
                                         "Boot's Ü\t-\tS/L/E: no\tExtra: yes"}
                          << "";
    QTest::newRow("unknown version")
        << QStringList{"--extra-version", "10.8"} << 2 << QStringList()
        << "kextkeeper volumes: --extra-version must be one of 10.4, 10.5, 10.6, 10.7\n";
    QTest::newRow("missing value") << QStringList{"--extra-version"} << 2 << QStringList()
                                   << "kextkeeper volumes: --extra-version needs a value\n";
    QTest::newRow("stray word") << QStringList{"Macintosh HD"} << 2 << QStringList()
                                << "kextkeeper volumes: unexpected words\n";
}

void TestVolumesVerb::run() {
    QFETCH(QStringList, args);
    QFETCH(int, status);
    QFETCH(QStringList, lines);
    QFETCH(QString, err);

    QProcess process;
    process.start(QStringLiteral(KK_BINARY),
                  QStringList{QStringLiteral("--root"), m_root, QStringLiteral("volumes")} + args);
    QVERIFY(process.waitForFinished(30000));
    QCOMPARE(process.exitCode(), status);
    QCOMPARE(QString::fromUtf8(process.readAllStandardError()), err);
    // One line per listed volume, in the order of the volume list.
    QString out;
    for (const QString &title : VolumeList::build(SystemPaths(m_root).volumesDir())) {
        if (!lines.isEmpty())
            out += lines.at(title == QLatin1String("Macintosh HD") ? 0 : 1) + QLatin1Char('\n');
    }
    QCOMPARE(QString::fromUtf8(process.readAllStandardOutput()), out);
}

QTEST_GUILESS_MAIN(TestVolumesVerb)
#include "tst_volumesverb.moc"

#include "CliRun.h"
#include "TestScripts.h"
#include "volumes/SystemPaths.h"
#include "volumes/VolumeList.h"

#include <QTemporaryDir>
#include <QTest>

// The real binary over a sandbox root: the global options and exit statuses, and
// `kextkeeper volumes` with a stand-in diskutil that calls Macintosh HD the started system.
class TestCli : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void run_data();
    void run();

private:
    QTemporaryDir m_dir;
    QString m_root;
};

void TestCli::initTestCase() {
    m_root = m_dir.filePath("root");
    const SystemPaths paths(m_root);
    for (const char *folder :
         {"Macintosh HD/System/Library/Extensions", "Macintosh HD/Extra/Extensions",
          "Boot's Ü/Extra/KextStore", "Boot's Ü/Extra/10.6/Extensions", "Backup/Documents"})
        QDir().mkpath(paths.volumesDir() + QLatin1Char('/') + QString::fromUtf8(folder));
    QDir().mkpath(paths.system(QStringLiteral("/usr/sbin")));
    const QByteArray fixtures = KK_FIXTURES "/diskutil/";
    writeScript(QDir(paths.system(QStringLiteral("/usr/sbin"))), QStringLiteral("diskutil"),
                "[ \"$1\" = info ] || exit 1\ncase \"$2\" in\n  */Macintosh\\ HD) cat '" +
                    fixtures + "info-startup.txt' ;;\n  *) cat '" + fixtures +
                    "info-other-volume.txt' ;;\nesac\n");
}

void TestCli::run_data() {
    QTest::addColumn<QStringList>("args"); // after --root ROOT
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("out"); // of --help only the first line
    QTest::addColumn<QString>("err"); // the first line

    // One line per listed volume, in the order of the volume list.
    const QStringList order = VolumeList::build(SystemPaths(m_root).volumesDir());
    const auto listing = [&order](const QString &hdExtra, const QString &bootExtra) {
        QString out;
        for (const QString &title : order)
            out += title +
                   (title == QLatin1String("Macintosh HD")
                        ? "\tstarted system\tS/L/E: yes\tExtra: " + hdExtra
                        : "\t-\tS/L/E: no\tExtra: " + bootExtra) +
                   '\n';
        return out;
    };
    QTest::newRow("help") << QStringList{"--help"} << 0
                          << "Usage: kextkeeper [--root DIR] [--dry-run] [VERB [ARGS...]]"
                          << "";
    QTest::newRow("version") << QStringList{"--version"} << 0 << "kextkeeper " KK_VERSION "\n"
                             << "";
    QTest::newRow("unknown verb") << QStringList{"frobnicate"} << 2 << ""
                                  << "kextkeeper: unknown verb frobnicate";
    QTest::newRow("unknown option") << QStringList{"--frob"} << 2 << ""
                                    << "kextkeeper: unknown option --frob";
    QTest::newRow("root without folder") << QStringList{"--root"} << 2 << ""
                                         << "kextkeeper: --root needs a folder";
    QTest::newRow("volumes") << QStringList{"volumes"} << 0 << listing("yes", "yes") << "";
    QTest::newRow("volumes, 10.6")
        << QStringList{"volumes", "--extra-version", "10.6"} << 0 << listing("no", "yes") << "";
    QTest::newRow("volumes, unknown version")
        << QStringList{"volumes", "--extra-version", "10.8"} << 2 << ""
        << "kextkeeper volumes: --extra-version must be one of 10.4, 10.5, 10.6, 10.7";
    QTest::newRow("volumes, missing value") << QStringList{"volumes", "--extra-version"} << 2 << ""
                                            << "kextkeeper volumes: --extra-version needs a value";
    QTest::newRow("volumes, stray word") << QStringList{"volumes", "Macintosh HD"} << 2 << ""
                                         << "kextkeeper volumes: unexpected words";
}

void TestCli::run() {
    QFETCH(QStringList, args);
    QFETCH(int, status);
    QFETCH(QString, out);
    QFETCH(QString, err);
    const CliRun run = runKextKeeper(m_root, m_dir.filePath("home"), args);
    QCOMPARE(run.status, status);
    QCOMPARE(args == QStringList{"--help"} ? run.out.section('\n', 0, 0) : run.out, out);
    QCOMPARE(run.err.section('\n', 0, 0), err);
}

QTEST_GUILESS_MAIN(TestCli)
#include "tst_cli.moc"

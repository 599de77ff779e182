#include "CliRun.h"
#include "TestScripts.h"
#include "exec/Command.h"
#include "volumes/SystemPaths.h"

#include <QTemporaryDir>
#include <QTest>

// `kextkeeper maintain` and `kextkeeper extra` as real processes over a sandbox root,
// printing their root commands with --dry-run.
class TestMaintenanceVerbs : public QObject {
    Q_OBJECT
private slots:
    void init();
    void maintainPrintsStepsAndCommands();
    void maintainSettings_data();
    void maintainSettings();
    void maintainFailures_data();
    void maintainFailures();
    void extraCommands_data();
    void extraCommands();
    void extraAnswersOnTheTerminal_data();
    void extraAnswersOnTheTerminal();

private:
    CliRun run(const QStringList &args, const QByteArray &input = {}) {
        return runKextKeeper(m_root, m_dir->path(), QStringList{"--dry-run"} + args, input);
    }
    void makeFolders(const QStringList &folders) {
        for (const QString &folder : folders)
            QVERIFY(QDir().mkpath(m_volume + folder));
    }
    QString q(const QString &relative) const { return shellQuote(m_volume + relative); }
    QString tool(const QString &path) const { return m_root + path; }

    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_root;
    QString m_volume; // root of "Mac HD's" with its trailing slash
};

namespace {
const QString title = QStringLiteral("Mac HD's");
}

void TestMaintenanceVerbs::init() {
    m_dir = std::make_unique<QTemporaryDir>();
    m_root = m_dir->path() + "/root";
    m_volume = SystemPaths(m_root).volumeRoot(title) + '/';
    QDir().mkpath(m_volume);
    QDir().mkpath(m_root + "/usr/sbin");
    writeScript(QDir(m_root + "/usr/sbin"), "kextcache", "exit 0\n");
}

void TestMaintenanceVerbs::maintainPrintsStepsAndCommands() {
    makeFolders({"Extra/Extensions"});
    const CliRun result = run({"maintain", "--volume", title, "--repair-extra"});
    QCOMPARE(result.err, QString());
    QCOMPARE(result.status, 0);
    // The step's status line comes before its commands; the steps are the plan's own.
    QCOMPARE(result.out.split('\n'),
             (QStringList{"Repairing Extra permissions...",
                          tool("/usr/sbin/chown") + " -R 0:0 " + q("Extra/Extensions"),
                          tool("/bin/chmod") + " -R 755 " + q("Extra/Extensions"),
                          "Selected tasks were finished.", ""}));
    // The apostrophe of the volume's name stays inside one quoted word.
    QVERIFY(result.out.contains("/Volumes/Mac HD'\\''s/Extra/Extensions'"));
}

void TestMaintenanceVerbs::maintainSettings_data() {
    QTest::addColumn<QByteArray>("settings");
    QTest::addColumn<bool>("lionCache");
    // Prelink Kernel from the settings is run end to end; the Lion key is read here.
    QTest::newRow("Lion key") << QByteArray("<key>Manually recreate Lion cache</key><true/>")
                              << true;
    QTest::newRow("malformed settings") << QByteArray("<key>Prelink") << false;
}

void TestMaintenanceVerbs::maintainSettings() {
    QFETCH(QByteArray, settings);
    QFETCH(bool, lionCache);
    makeFolders({"System/Library/Extensions"});
    QVERIFY(writePlist(m_volume + "System/Library/CoreServices/SystemVersion.plist",
                       "<key>ProductVersion</key><string>10.7</string>"));
    QVERIFY(writePlist(m_dir->path() + "/.config/kextkeeper/Info.plist", settings));
    const CliRun result = run({"maintain", "--volume", title, "--rebuild-caches"});
    QCOMPARE(result.status, 0);
    QCOMPARE(result.out.contains("Startup/Extensions.mkext"), lionCache);
}

void TestMaintenanceVerbs::maintainFailures_data() {
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("out");
    QTest::addColumn<QString>("error");

    QTest::newRow("no task") << QStringList{"--volume", title} << 2 << QString()
                             << "You haven't selected any options.\n";
    QTest::newRow("nothing to build from")
        << QStringList{"--volume", title, "--rebuild-extra-mkext", "--repair-sle"} << 1
        << "Rebuilding Extra mkext...\n"
        << "No Extra/Extensions or Extra/KextStore found.\n";
    QTest::newRow("unknown volume")
        << QStringList{"--volume", "Nowhere", "--repair-sle"} << 1 << QString()
        << "kextkeeper maintain: no volume with an Extra or System/Library folder is called "
           "Nowhere\n";
    QTest::newRow("no volume") << QStringList{"--repair-sle"} << 2 << QString()
                               << "kextkeeper maintain: --volume NAME is needed\n";
    QTest::newRow("bad version")
        << QStringList{"--volume", title, "--extra-version", "10.9", "--repair-extra"} << 2
        << QString()
        << "kextkeeper maintain: --extra-version must be one of 10.4, 10.5, 10.6, 10.7\n";
}

void TestMaintenanceVerbs::maintainFailures() {
    QFETCH(QStringList, args);
    QFETCH(int, status);
    QFETCH(QString, out);
    QFETCH(QString, error);
    makeFolders({"Extra/Themes", "System/Library/Extensions"});
    const CliRun result = run(QStringList{"maintain"} + args);
    QCOMPARE(result.status, status);
    QCOMPARE(result.err, error);
    QCOMPARE(result.out, out);
}

void TestMaintenanceVerbs::extraCommands_data() {
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("first"); // the first root command; "R/" is the volume
    QTest::addColumn<QString>("error");
    // The full lists are the Extra operations' own; each word must reach its operation.
    // to-kextstore runs end to end.
    const QStringList both{"Extra/Extensions", "Extra/KextStore", "Extra/Extensions.mkext"};
    QTest::newRow("to-extensions")
        << "to-extensions" << both << 0 << "/bin/rm -R R/Extra/Extensions.mkext" << QString();
    QTest::newRow("hide") << "hide" << QStringList{"Extra"} << 0
                          << "/usr/bin/chflags hidden R/Extra" << QString();
    QTest::newRow("show") << "show" << QStringList{"Extra"} << 0
                          << "/usr/bin/chflags nohidden R/Extra" << QString();
    QTest::newRow("to-extensions without KextStore")
        << "to-extensions" << QStringList{"Extra/Extensions"} << 1 << QString()
        << "No Extra/KextStore found.\n";
}

void TestMaintenanceVerbs::extraCommands() {
    QFETCH(QString, command);
    QFETCH(QStringList, folders);
    QFETCH(int, status);
    QFETCH(QString, first);
    QFETCH(QString, error);
    makeFolders(folders);
    const CliRun result = run({"extra", command, "--volume", title, "--yes"});
    QCOMPARE(result.err, error);
    QCOMPARE(result.status, status);
    QStringList words = first.split(' ', Qt::SkipEmptyParts);
    for (QString &word : words)
        word = word.startsWith("R/") ? q(word.mid(2)) : word;
    if (!words.isEmpty())
        words[0] = tool(words[0]);
    QCOMPARE(result.out.section('\n', 0, 0), words.join(' '));
}

void TestMaintenanceVerbs::extraAnswersOnTheTerminal_data() {
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<bool>("runs");
    QTest::newRow("yes") << QByteArray("y\n") << true;
    QTest::newRow("no") << QByteArray("n\n") << false;
    QTest::newRow("input closed") << QByteArray() << false;
}

void TestMaintenanceVerbs::extraAnswersOnTheTerminal() {
    QFETCH(QByteArray, input);
    QFETCH(bool, runs);
    makeFolders({"Extra/Extensions"});
    const CliRun result = run({"extra", "to-kextstore", "--volume", title}, input);
    QCOMPARE(result.status, 0);
    QVERIFY2(result.out.startsWith(
                 "Do you want to create Extra/KextStore from Extra/Extensions on selected disk?\n"
                 "Mkext will be created, it can take a while.\nContinue? [y/N] "),
             qPrintable(result.out));
    QCOMPARE(result.out.contains(tool("/bin/mv")), runs);
    QCOMPARE(result.out.contains(tool("/usr/sbin/kextcache")), runs);
}

QTEST_GUILESS_MAIN(TestMaintenanceVerbs)
#include "tst_maintenanceverbs.moc"

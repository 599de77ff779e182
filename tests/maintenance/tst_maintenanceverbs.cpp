#include "TestScripts.h"
#include "exec/Command.h"
#include "volumes/SystemPaths.h"

#include <QProcess>
#include <QProcessEnvironment>
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
    struct Result {
        int status;
        QString out;
        QString err;
    };
    Result run(const QStringList &args, const QByteArray &input = {});
    void makeFolders(const QStringList &folders);
    void writeSettings(const QByteArray &entries);
    void writeVersion(const QByteArray &version);
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
    const QDir sbin(m_root + "/usr/sbin");
    writeScript(sbin, "kextcache", "exit 0\n");
    // The volume under test is the started system.
    const QByteArray fixtures = KK_FIXTURES "/diskutil/";
    writeScript(sbin, "diskutil",
                "case \"$2\" in\n  *\"Mac HD's\"*) cat '" + fixtures +
                    "info-startup.txt' ;;\n  *) cat '" + fixtures +
                    "info-other-volume.txt' ;;\nesac\n");
    QDir().mkpath(m_dir->path() + "/config/kextkeeper");
}

TestMaintenanceVerbs::Result TestMaintenanceVerbs::run(const QStringList &args,
                                                       const QByteArray &input) {
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("XDG_CONFIG_HOME", m_dir->path() + "/config");
    process.setProcessEnvironment(env);
    process.start(KK_BINARY, QStringList{"--root", m_root} + args);
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(30000);
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

void TestMaintenanceVerbs::makeFolders(const QStringList &folders) {
    for (const QString &folder : folders)
        QVERIFY(QDir().mkpath(m_volume + folder));
}

void TestMaintenanceVerbs::writeSettings(const QByteArray &entries) {
    QFile file(m_dir->path() + "/config/kextkeeper/Info.plist");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n" +
               entries + "</dict>\n</plist>\n");
}

void TestMaintenanceVerbs::writeVersion(const QByteArray &version) {
    QDir().mkpath(m_volume + "System/Library/CoreServices");
    QFile file(m_volume + "System/Library/CoreServices/SystemVersion.plist");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
               "<key>ProductVersion</key><string>" +
               version + "</string></dict></plist>\n");
}

void TestMaintenanceVerbs::maintainPrintsStepsAndCommands() {
    makeFolders({"Extra/Extensions", "System/Library/Extensions"});
    const Result result =
        run({"--dry-run", "maintain", "--volume", title, "--repair-extra", "--repair-sle"});
    QCOMPARE(result.err, QString());
    QCOMPARE(result.status, 0);
    // Each step's status line comes before its commands.
    QCOMPARE(result.out.split('\n'),
             (QStringList{"Repairing Extra permissions...",
                          tool("/usr/sbin/chown") + " -R 0:0 " + q("Extra/Extensions"),
                          tool("/bin/chmod") + " -R 755 " + q("Extra/Extensions"),
                          "Repairing S/L/E permissions...",
                          tool("/usr/sbin/chown") + " -R 0:0 " + q("System/Library/Extensions"),
                          tool("/bin/chmod") + " -R 755 " + q("System/Library/Extensions"),
                          "Repairing disk permissions...",
                          tool("/usr/sbin/diskutil") + " repairpermissions " + q(""),
                          "Selected tasks were finished.", ""}));
    // The apostrophe of the volume's name stays inside one quoted word.
    QVERIFY(result.out.contains("/Volumes/Mac HD'\\''s/Extra/Extensions'"));
}

void TestMaintenanceVerbs::maintainSettings_data() {
    QTest::addColumn<QByteArray>("settings");
    QTest::addColumn<bool>("lionCache");
    QTest::addColumn<bool>("systemCaches");
    // Prelink Kernel from the settings is run end to end; the Lion key is read here.
    QTest::newRow("Lion key true, Prelink off")
        << QByteArray("<key>Manually recreate Lion cache</key><true/>"
                      "<key>Prelink Kernel</key><false/>")
        << true << false;
    QTest::newRow("malformed settings") << QByteArray("<key>Prelink") << false << false;
}

void TestMaintenanceVerbs::maintainSettings() {
    QFETCH(QByteArray, settings);
    QFETCH(bool, lionCache);
    QFETCH(bool, systemCaches);
    makeFolders({"System/Library/Extensions"});
    writeVersion("10.7");
    if (!settings.isEmpty())
        writeSettings(settings);
    const Result result = run({"--dry-run", "maintain", "--volume", title, "--rebuild-caches"});
    QCOMPARE(result.status, 0);
    QCOMPARE(result.out.contains("Startup/Extensions.mkext"), lionCache);
    QCOMPARE(result.out.contains("-system-caches"), systemCaches);
    QCOMPARE(result.out.contains("-system-prelinked-kernel"), systemCaches);
    QVERIFY(result.out.contains("touch " + q("System/Library/Extensions")));
}

void TestMaintenanceVerbs::maintainFailures_data() {
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("error");
    QTest::addColumn<QString>("out");

    QTest::newRow("no task") << QStringList{"--volume", title} << 2
                             << "You haven't selected any options.\n"
                             << "";
    QTest::newRow("nothing to build from")
        << QStringList{"--volume", title, "--rebuild-extra-mkext", "--repair-sle"} << 1
        << "No Extra/Extensions or Extra/KextStore found.\n"
        << "Rebuilding Extra mkext...\n";
    QTest::newRow("unknown volume")
        << QStringList{"--volume", "Nowhere", "--repair-sle"} << 1
        << "kextkeeper maintain: no volume with an Extra or System/Library folder is called "
           "Nowhere\n"
        << "";
    QTest::newRow("no volume") << QStringList{"--repair-sle"} << 2
                               << "kextkeeper maintain: --volume NAME is needed\n"
                               << "";
    QTest::newRow("bad version")
        << QStringList{"--volume", title, "--extra-version", "10.9", "--repair-extra"} << 2
        << "kextkeeper maintain: --extra-version must be one of 10.4, 10.5, 10.6, 10.7\n"
        << "";
}

void TestMaintenanceVerbs::maintainFailures() {
    QFETCH(QStringList, args);
    QFETCH(int, status);
    QFETCH(QString, error);
    QFETCH(QString, out);
    makeFolders({"Extra/Themes", "System/Library/Extensions"});
    const Result result = run(QStringList{"--dry-run", "maintain"} + args);
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
    const QStringList both{"Extra/Extensions", "Extra/KextStore", "Extra/Extensions.mkext"};
    QTest::newRow("to-kextstore") << "to-kextstore" << both << 0
                                  << "/bin/mv R/Extra/Extensions R/Extra/KextStore"
                                  << "";
    QTest::newRow("to-extensions")
        << "to-extensions" << both << 0 << "/bin/rm -R R/Extra/Extensions.mkext"
        << "";
    QTest::newRow("hide") << "hide" << QStringList{"Extra"} << 0
                          << "/usr/bin/chflags hidden R/Extra"
                          << "";
    QTest::newRow("show") << "show" << QStringList{"Extra"} << 0
                          << "/usr/bin/chflags nohidden R/Extra"
                          << "";
    QTest::newRow("to-extensions without KextStore")
        << "to-extensions" << QStringList{"Extra/Extensions"} << 1 << ""
        << "No Extra/KextStore found.\n";
}

void TestMaintenanceVerbs::extraCommands() {
    QFETCH(QString, command);
    QFETCH(QStringList, folders);
    QFETCH(int, status);
    QFETCH(QString, first);
    QFETCH(QString, error);
    makeFolders(folders);
    const Result result = run({"--dry-run", "extra", command, "--volume", title, "--yes"});
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
    const Result result = run({"--dry-run", "extra", "to-kextstore", "--volume", title}, input);
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

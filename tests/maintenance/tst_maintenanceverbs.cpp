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
    void extraMovesFoldersForReal();

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
    makeFolders({"Extra/Extensions", "Extra/KextStore", "System/Library/Extensions"});
    writeVersion("10.7.4");
    writeSettings("<key>Prelink Kernel</key><true/>"
                  "<key>Manually recreate Lion cache</key><true/>");
    const Result result = run({"--dry-run", "maintain", "--volume", title, "--repair-extra",
                               "--rebuild-extra-mkext", "--repair-sle", "--rebuild-caches"});
    QCOMPARE(result.err, QString());
    QCOMPARE(result.status, 0);
    const QString kextcache = tool("/usr/sbin/kextcache");
    const QString mkextArgs = " -v 1 -a i386 -a x86_64 -m ";
    const QStringList expected{
        "Repairing Extra permissions...",
        tool("/usr/sbin/chown") + " -R 0:0 " + q("Extra/Extensions"),
        tool("/bin/chmod") + " -R 755 " + q("Extra/Extensions"),
        tool("/usr/sbin/chown") + " -R 0:0 " + q("Extra/KextStore"),
        tool("/bin/chmod") + " -R 755 " + q("Extra/KextStore"),
        "Rebuilding Extra mkext...",
        kextcache + mkextArgs + q("Extra/Extensions.mkext") + ' ' + q("Extra/KextStore"),
        tool("/usr/bin/touch") + ' ' + q("Extra/Extensions"),
        kextcache + mkextArgs + q("Extra/Extensions.mkext") + ' ' + q("Extra/Extensions"),
        "Repairing S/L/E permissions...",
        tool("/usr/sbin/chown") + " -R 0:0 " + q("System/Library/Extensions"),
        tool("/bin/chmod") + " -R 755 " + q("System/Library/Extensions"),
        "Repairing disk permissions...",
        tool("/usr/sbin/diskutil") + " repairpermissions " + q(""),
        "Rebuilding system cache...",
        tool("/usr/bin/touch") + ' ' + q("System/Library/Extensions"),
        kextcache + mkextArgs +
            q("System/Library/Caches/com.apple.kext.caches/Startup/Extensions.mkext") + ' ' +
            q("System/Library/Extensions"),
        kextcache + " -system-caches",
        kextcache + " -system-prelinked-kernel",
        "Selected tasks were finished.",
        ""};
    QCOMPARE(result.out.split('\n'), expected);
    // The apostrophe of the volume's name stays inside one quoted word.
    QVERIFY(result.out.contains("/Volumes/'\\''Mac HD'\\''s/Extra/Extensions'") ||
            result.out.contains("/Volumes/Mac HD'\\''s/Extra/Extensions'"));
}

void TestMaintenanceVerbs::maintainSettings_data() {
    QTest::addColumn<QByteArray>("settings");
    QTest::addColumn<bool>("lionCache");
    QTest::addColumn<bool>("systemCaches");
    QTest::newRow("no settings file") << QByteArray() << false << false;
    QTest::newRow("Lion key absent")
        << QByteArray("<key>Prelink Kernel</key><true/>") << false << true;
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
    QTest::addColumn<QStringList>("lines"); // root commands, "R/" is the volume
    QTest::addColumn<QString>("error");

    const QStringList both{"Extra/Extensions", "Extra/KextStore", "Extra/Extensions.mkext"};
    QTest::newRow("to-kextstore")
        << "to-kextstore" << both << 0
        << QStringList{"/bin/mv R/Extra/Extensions R/Extra/KextStore",
                       "/usr/sbin/kextcache -v 1 -a i386 -a x86_64 -m R/Extra/Extensions.mkext "
                       "R/Extra/KextStore"}
        << "";
    QTest::newRow("to-extensions") << "to-extensions" << both << 0
                                   << QStringList{"/bin/rm -R R/Extra/Extensions.mkext",
                                                  "/bin/mv R/Extra/KextStore R/Extra/Extensions"}
                                   << "";
    QTest::newRow("hide") << "hide" << QStringList{"Extra"} << 0
                          << QStringList{"/usr/bin/chflags hidden R/Extra"} << "";
    QTest::newRow("show") << "show" << QStringList{"Extra"} << 0
                          << QStringList{"/usr/bin/chflags nohidden R/Extra"} << "";
    QTest::newRow("to-extensions without KextStore")
        << "to-extensions" << QStringList{"Extra/Extensions"} << 1 << QStringList{}
        << "No Extra/KextStore found.\n";
}

void TestMaintenanceVerbs::extraCommands() {
    QFETCH(QString, command);
    QFETCH(QStringList, folders);
    QFETCH(int, status);
    QFETCH(QStringList, lines);
    QFETCH(QString, error);
    makeFolders(folders);
    const Result result = run({"--dry-run", "extra", command, "--volume", title, "--yes"});
    QCOMPARE(result.err, error);
    QCOMPARE(result.status, status);
    QStringList expected;
    for (const QString &line : lines) {
        QStringList words = line.split(' ');
        words[0] = tool(words[0]);
        for (qsizetype i = 1; i < words.size(); ++i)
            if (words[i].startsWith("R/"))
                words[i] = q(words[i].mid(2));
        expected << words.join(' ');
    }
    QCOMPARE(result.out, expected.isEmpty() ? QString() : expected.join('\n') + '\n');
}

void TestMaintenanceVerbs::extraAnswersOnTheTerminal_data() {
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<bool>("runs");
    QTest::newRow("yes") << QByteArray("y\n") << true;
    QTest::newRow("no") << QByteArray("n\n") << false;
    QTest::newRow("just return") << QByteArray("\n") << false;
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

void TestMaintenanceVerbs::extraMovesFoldersForReal() {
    // On a sandbox root the tools below it run directly; these pass on to the host's.
    QDir().mkpath(m_root + "/bin");
    writeScript(QDir(m_root + "/bin"), "mv", "exec /bin/mv \"$@\"\n");
    writeScript(QDir(m_root + "/bin"), "rm", "exec /bin/rm \"$@\"\n");
    makeFolders({"Extra/KextStore/Fake.kext/Contents", "Extra/Extensions.mkext"});
    const Result result = run({"extra", "to-extensions", "--volume", title, "--yes"});
    QCOMPARE(result.err, QString());
    QCOMPARE(result.status, 0);
    QVERIFY(QFileInfo::exists(m_volume + "Extra/Extensions/Fake.kext/Contents"));
    QVERIFY(!QFileInfo::exists(m_volume + "Extra/KextStore"));
    QVERIFY(!QFileInfo::exists(m_volume + "Extra/Extensions.mkext"));
}

QTEST_GUILESS_MAIN(TestMaintenanceVerbs)
#include "tst_maintenanceverbs.moc"

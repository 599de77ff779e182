#include "CliRun.h"
#include "TestScripts.h"
#include "volumes/SystemPaths.h"

#include <QTemporaryDir>
#include <QTest>

// `kextkeeper maintain` and `kextkeeper extra` as real processes over a sandbox root,
// printing their root commands with --dry-run.
class TestMaintenanceVerbs : public QObject {
    Q_OBJECT
private slots:
    void init();
    void maintain_data();
    void maintain();
    void maintainSettings_data();
    void maintainSettings();
    void extra_data();
    void extra();

private:
    CliRun run(const QStringList &args, const QByteArray &input = {}) {
        return runKextKeeper(m_root, m_dir->path(), QStringList{"--dry-run"} + args, input);
    }
    void makeFolders(const QStringList &folders) {
        for (const QString &folder : folders)
            QVERIFY(QDir().mkpath(m_volume + folder));
    }
    // Expected output: "%R" is the system root, "%V" the volume's root inside single
    // quotes, where its apostrophe reads '\''.
    QString expand(QString text) const {
        return text.replace("%R", m_root).replace("%V", QString(m_volume).replace("'", "'\\''"));
    }

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

void TestMaintenanceVerbs::maintain_data() {
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("out");
    QTest::addColumn<QString>("error");

    // The steps' command lists are the plan's own; here each status line comes before
    // its commands.
    QTest::newRow("repair S/L/E") << QStringList{"--volume", title, "--repair-sle"} << 0
                                  << "Repairing S/L/E permissions...\n"
                                     "%R/usr/sbin/chown -R 0:0 '%VSystem/Library/Extensions'\n"
                                     "%R/bin/chmod -R 755 '%VSystem/Library/Extensions'\n"
                                     "Repairing disk permissions...\n"
                                     "%R/usr/sbin/diskutil repairpermissions '%V'\n"
                                     "Selected tasks were finished.\n"
                                  << QString();
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

void TestMaintenanceVerbs::maintain() {
    QFETCH(QStringList, args);
    QFETCH(int, status);
    QFETCH(QString, out);
    QFETCH(QString, error);
    makeFolders({"Extra/Themes", "System/Library/Extensions"});
    const CliRun result = run(QStringList{"maintain"} + args);
    QCOMPARE(result.status, status);
    QCOMPARE(result.err, error);
    QCOMPARE(result.out, expand(out));
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

void TestMaintenanceVerbs::extra_data() {
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<QByteArray>("input"); // "--yes": the flag answers instead
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("out"); // the output's first lines
    QTest::addColumn<QString>("error");
    // The full lists are the Extra operations' own; each word must reach its operation
    // and only Yes may run it. to-kextstore with --yes runs end to end.
    const QStringList both{"Extra/Extensions", "Extra/KextStore", "Extra/Extensions.mkext"};
    const QByteArray yes = "--yes";
    QTest::newRow("to-extensions") << "to-extensions" << both << yes << 0
                                   << "%R/bin/rm -R '%VExtra/Extensions.mkext'" << QString();
    QTest::newRow("hide") << "hide" << QStringList{"Extra"} << yes << 0
                          << "%R/usr/bin/chflags hidden '%VExtra'" << QString();
    QTest::newRow("show") << "show" << QStringList{"Extra"} << yes << 0
                          << "%R/usr/bin/chflags nohidden '%VExtra'" << QString();
    QTest::newRow("to-extensions without KextStore")
        << "to-extensions" << QStringList{"Extra/Extensions"} << yes << 1 << QString()
        << "No Extra/KextStore found.\n";
    const QString ask =
        "Do you want to create Extra/KextStore from Extra/Extensions on selected disk?\n"
        "Mkext will be created, it can take a while.\nContinue? [y/N] ";
    const QStringList ext{"Extra/Extensions"};
    QTest::newRow("y on the terminal")
        << "to-kextstore" << ext << QByteArray("y\n") << 0
        << ask + "%R/bin/mv '%VExtra/Extensions' '%VExtra/KextStore'" << QString();
    QTest::newRow("n on the terminal")
        << "to-kextstore" << ext << QByteArray("n\n") << 0 << ask << QString();
    QTest::newRow("input closed") << "to-kextstore" << ext << QByteArray() << 0 << ask << QString();
}

void TestMaintenanceVerbs::extra() {
    QFETCH(QString, command);
    QFETCH(QStringList, folders);
    QFETCH(QByteArray, input);
    QFETCH(int, status);
    QFETCH(QString, out);
    QFETCH(QString, error);
    makeFolders(folders);
    QStringList args{"extra", command, "--volume", title};
    if (input == "--yes") {
        args << "--yes";
        input.clear();
    }
    const CliRun result = run(args, input);
    QCOMPARE(result.err, error);
    QCOMPARE(result.status, status);
    const QStringList lines = expand(out).split('\n');
    QCOMPARE(result.out.split('\n').mid(0, lines.size()), lines);
}

QTEST_GUILESS_MAIN(TestMaintenanceVerbs)
#include "tst_maintenanceverbs.moc"

#include "../sandbox/SandboxFixture.h"
#include "sandbox/LoadedKextState.h"

#include <QDir>
#include <QFileInfo>
#include <QProcessEnvironment>

// The command-line verbs on a fresh sandbox with real processes all the way down: the
// command log must hold exactly the commands a Mac would have run, in order.
class TestE2eCli : public QObject {
    Q_OBJECT
private slots:
    void init();
    void maintenanceWithAllFourOptions_data();
    void maintenanceWithAllFourOptions();
    void installTwoKextsWithBackup();
    void convertToKextStore();
    void testLoad_data();
    void testLoad();
    void unpackAndList();

private:
    struct Result {
        int status;
        QString out;
        QString err;
    };
    Result kextkeeper(const QStringList &args) const;
    QString r(const QString &relative = {}) const {
        return m_sandbox->volume(QStringLiteral("Macintosh HD/")) + relative;
    }
    QString tool(const QString &systemPath, const QStringList &args) const {
        return m_sandbox->logLine(systemPath, args);
    }
    QString rebuild(const QString &mkext, const QString &folder) const {
        return tool(QStringLiteral("/usr/sbin/kextcache"),
                    {"-v", "1", "-a", "i386", "-a", "x86_64", "-m", mkext, folder});
    }
    void writeSettings(bool prelink) const;

    std::unique_ptr<SandboxFixture> m_sandbox;
    std::unique_ptr<QTemporaryDir> m_home;
};

void TestE2eCli::init() {
    m_sandbox = std::make_unique<SandboxFixture>();
    QVERIFY(m_sandbox->create());
    m_sandbox->clearLog();
    m_home = std::make_unique<QTemporaryDir>();
    QDir().mkpath(m_home->path() + QStringLiteral("/Desktop"));
}

TestE2eCli::Result TestE2eCli::kextkeeper(const QStringList &args) const {
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("HOME"), m_home->path());
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), m_home->path() + QStringLiteral("/config"));
    process.setProcessEnvironment(env);
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(QStringLiteral(KK_BINARY), QStringList{"--root", m_sandbox->root()} + args);
    process.waitForFinished(60000);
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

void TestE2eCli::writeSettings(bool prelink) const {
    const QString folder = m_home->path() + QStringLiteral("/config/kextkeeper");
    QDir().mkpath(folder);
    QFile file(folder + QStringLiteral("/Info.plist"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(
        QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n"
                       "<dict>\n<key>Prelink Kernel</key>\n<%1/>\n"
                       "<key>Manually recreate Lion cache</key>\n<false/>\n"
                       "<key>SUCheckAtStartup</key>\n<false/>\n</dict>\n</plist>\n")
            .arg(prelink ? "true" : "false")
            .toUtf8());
}

void TestE2eCli::maintenanceWithAllFourOptions_data() {
    QTest::addColumn<bool>("prelink");
    QTest::newRow("prelink off") << false;
    QTest::newRow("prelink on") << true;
}

void TestE2eCli::maintenanceWithAllFourOptions() {
    QFETCH(bool, prelink);
    writeSettings(prelink);
    const Result run = kextkeeper({"maintain", "--volume", "Macintosh HD", "--repair-extra",
                                   "--rebuild-extra-mkext", "--repair-sle", "--rebuild-caches"});
    QCOMPARE(run.status, 0);
    QVERIFY(run.out.endsWith(QLatin1String("Selected tasks were finished.\n")));
    const QString extensions = r(QStringLiteral("Extra/Extensions"));
    const QString sle = r(QStringLiteral("System/Library/Extensions"));
    QStringList expected{
        tool("/usr/sbin/chown", {"-R", "0:0", extensions}),
        tool("/bin/chmod", {"-R", "755", extensions}),
        tool("/usr/bin/touch", {extensions}),
        rebuild(r(QStringLiteral("Extra/Extensions.mkext")), extensions),
        tool("/usr/sbin/chown", {"-R", "0:0", sle}),
        tool("/bin/chmod", {"-R", "755", sle}),
        tool("/usr/sbin/diskutil", {"repairpermissions", r()}),
        tool("/usr/bin/touch", {sle}),
        // Whether the target is the started system is asked of diskutil, as the user.
        tool("/usr/sbin/diskutil", {"info", r()}),
    };
    if (prelink)
        expected << tool("/usr/sbin/kextcache", {"-system-caches"})
                 << tool("/usr/sbin/kextcache", {"-system-prelinked-kernel"});
    QCOMPARE(m_sandbox->logLines(), expected);
    QVERIFY(QFileInfo(r(QStringLiteral("Extra/Extensions.mkext"))).size() > 0);
}

void TestE2eCli::installTwoKextsWithBackup() {
    // A newer copy of a kext already in Extra/Extensions, and a new one with a hostile name.
    const QString drop = m_home->path() + QStringLiteral("/Downloads");
    const QString replacement = drop + QStringLiteral("/ExampleSensors.kext");
    const QString added = drop + QStringLiteral("/Zed's Ü driver.kext");
    QVERIFY(QDir().mkpath(replacement + QStringLiteral("/Contents")));
    QVERIFY(QDir().mkpath(added + QStringLiteral("/Contents")));
    QFile::copy(r(QStringLiteral("Extra/Extensions/ExampleSensors.kext/Contents/Info.plist")),
                replacement + QStringLiteral("/Contents/Info.plist"));
    QFile::copy(r(QStringLiteral("Extra/Extensions/ExampleDiskShim.kext/Contents/Info.plist")),
                added + QStringLiteral("/Contents/Info.plist"));

    const Result run = kextkeeper(
        {"install", "--volume", "Macintosh HD", "--to", "extra", "--backup", replacement, added});
    QVERIFY2(run.status == 0, qPrintable(run.err));
    const QString d = r(QStringLiteral("Extra/Extensions"));
    const QStringList expected{
        tool("/bin/rm", {"-Rf", d + QStringLiteral("/ExampleSensors.kext")}),
        tool("/bin/cp", {"-R", replacement, d}),
        tool("/bin/cp", {"-R", added, d}),
        tool("/usr/sbin/chown", {"-R", "0:0", d}),
        tool("/bin/chmod", {"-R", "755", d}),
        tool("/usr/bin/touch", {d}),
        rebuild(r(QStringLiteral("Extra/Extensions.mkext")), d),
    };
    QCOMPARE(m_sandbox->logLines(), expected);

    // The replaced bundle went to a dated backup folder first, the new ones are in place.
    const QDir backups(m_home->path() + QStringLiteral("/Desktop/Kext Backups"));
    const QStringList runs = backups.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    QCOMPARE(runs.size(), 1);
    QVERIFY(
        QFileInfo::exists(backups.filePath(runs.first()) +
                          QStringLiteral("/ExampleSensors.kext/Contents/MacOS/ExampleSensors")));
    QVERIFY(!QFileInfo::exists(d + QStringLiteral("/ExampleSensors.kext/Contents/MacOS")));
    QVERIFY(QFileInfo::exists(d + QStringLiteral("/Zed's Ü driver.kext/Contents/Info.plist")));
}

void TestE2eCli::convertToKextStore() {
    const Result run = kextkeeper({"extra", "to-kextstore", "--volume", "Macintosh HD", "--yes"});
    QVERIFY2(run.status == 0, qPrintable(run.err));
    const QString store = r(QStringLiteral("Extra/KextStore"));
    QCOMPARE(m_sandbox->logLines(),
             (QStringList{tool("/bin/mv", {r(QStringLiteral("Extra/Extensions")), store}),
                          rebuild(r(QStringLiteral("Extra/Extensions.mkext")), store)}));
    QVERIFY(QFileInfo::exists(store + QStringLiteral("/ExampleSensors.kext")));
    QVERIFY(!QFileInfo::exists(r(QStringLiteral("Extra/Extensions"))));
}

void TestE2eCli::testLoad_data() {
    QTest::addColumn<QString>("bundle");
    QTest::addColumn<QString>("error"); // %1: the bundle
    QTest::addColumn<bool>("loaded");
    QTest::newRow("loads") << "Extra/Extensions/ExampleDiskShim.kext"
                           << "" << true;
    QTest::newRow("i386 only")
        << "Extra/Extensions/ExampleEthernet.kext"
        << "%1 failed to load - (libkern/kext) not loadable (reason unspecified); check the "
           "system/kernel logs for errors or try kextutil(8).\n"
        << false;
}

void TestE2eCli::testLoad() {
    QFETCH(QString, bundle);
    QFETCH(QString, error);
    QFETCH(bool, loaded);
    const QString k = r(bundle);
    const Result run = kextkeeper({"load", k});
    QCOMPARE(run.status, error.isEmpty() ? 0 : 1);
    if (!error.isEmpty())
        QVERIFY2(run.err.contains(QString(error).replace(QStringLiteral("%1"), k).trimmed()),
                 qPrintable(run.err));
    QCOMPARE(m_sandbox->logLines(),
             (QStringList{tool("/usr/sbin/chown", {"-R", "0:0", k}), tool("/sbin/kextload", {k})}));
    const QList<LoadedKext> kexts = LoadedKextState(m_sandbox->root()).read();
    QCOMPARE(LoadedKextState::find(kexts, bundle.contains(QLatin1String("DiskShim"))
                                              ? QStringLiteral("org.example.driver.DiskShim")
                                              : QStringLiteral("org.example.driver.Ethernet")) !=
                 nullptr,
             loaded);
}

void TestE2eCli::unpackAndList() {
    const QString mkext = r(QStringLiteral("Extra/Extensions.mkext"));
    const QString folder = m_home->path() + QStringLiteral("/Desktop/Mkext Contents");
    QDir().mkpath(folder);
    const Result unpack = kextkeeper({"mkext", "unpack", mkext, "--arch", "i386", "--to", folder});
    QVERIFY2(unpack.status == 0, qPrintable(unpack.err));
    QStringList unpacked = QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    unpacked.sort();
    // Like Apple's tool, plug-ins come out beside their containers.
    QCOMPARE(unpacked,
             (QStringList{"ExampleAudioPatch.kext", "ExampleCPUTemp.kext", "ExampleDiskShim.kext",
                          "ExampleEthernet.kext", "ExampleSensors.kext"}));
    QVERIFY(
        QFileInfo::exists(folder + QStringLiteral("/ExampleEthernet.kext/Contents/Info.plist")));

    const Result loaded = kextkeeper({"loaded", "--filter", "EXAMPLE.driver"});
    QCOMPARE(loaded.status, 0);
    QVERIFY2(loaded.out.contains(QLatin1String("org.example.driver.Sensors (3.4.1)")),
             qPrintable(loaded.out));
    QVERIFY(!loaded.out.contains(QLatin1String("com.sandboxmac")));
    QCOMPARE(m_sandbox->logLines(), QStringList{tool("/usr/sbin/kextstat", {})});
}

QTEST_GUILESS_MAIN(TestE2eCli)
#include "tst_e2ecli.moc"

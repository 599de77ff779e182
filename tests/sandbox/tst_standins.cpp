#include "SandboxFixture.h"
#include "plist/PlistFile.h"
#include "sandbox/LoadedKextState.h"
#include "volumes/DiskInfo.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <unistd.h>

// Every stand-in run as a real process through its script: Apple's output formats, the
// effects on the sandbox, and the line it leaves in the command log.
class TestStandIns : public QObject {
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void kextstatLayout();
    void loadAndUnload_data();
    void loadAndUnload();
    void loadingPullsInLibraries();
    void unloadGivesBackReferences();
    void diskutilInfo_data();
    void diskutilInfo();
    void repairPermissions();
    void systemProfiler_data();
    void systemProfiler();
    void fileDescriptions_data();
    void fileDescriptions();
    void kextlibs_data();
    void kextlibs();
    void hostToolsWithHostileNames();
    void chflagsRecordsBesideTheFolder();
    void systemCachesAreSilent_data();
    void systemCachesAreSilent();
    void mkextRoundTrip();

private:
    QStringList loadedIdentifiers() const;
    QString writeKext(const QString &name, const QString &identifier, const QString &library);
    SandboxFixture m_sandbox;
};

void TestStandIns::initTestCase() {
    QVERIFY(m_sandbox.create());
}

void TestStandIns::init() {
    QVERIFY(LoadedKextState(m_sandbox.root()).write(LoadedKextState::initial()));
    m_sandbox.clearLog();
}

QStringList TestStandIns::loadedIdentifiers() const {
    QStringList ids;
    for (const LoadedKext &kext : LoadedKextState(m_sandbox.root()).read())
        ids << kext.identifier;
    return ids;
}

// A kext of the test's own, in a folder with a hostile name outside the system folders.
QString TestStandIns::writeKext(const QString &name, const QString &identifier,
                                const QString &library) {
    const QString bundle = m_sandbox.path(QStringLiteral("/tmp/it's Ü/") + name + ".kext");
    QDir().mkpath(bundle + QStringLiteral("/Contents"));
    PList::Dictionary dict;
    dict.Set("CFBundleIdentifier", PList::String(identifier.toStdString()));
    dict.Set("CFBundleVersion", PList::String("1.0"));
    PList::Dictionary libraries;
    libraries.Set(library.toStdString(), PList::String("1.0.0"));
    dict.Set("OSBundleLibraries", libraries);
    PlistFile::writeDictionary(bundle + QStringLiteral("/Contents/Info.plist"), dict);
    return bundle;
}

void TestStandIns::kextstatLayout() {
    const SandboxFixture::Run run = m_sandbox.run(QStringLiteral("/usr/sbin/kextstat"), {});
    QCOMPARE(run.status, 0);
    QVERIFY(run.out.endsWith('\n'));
    const QStringList lines =
        QString::fromUtf8(run.out).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QCOMPARE(lines.first(), QStringLiteral("Index Refs Address            Size       Wired      "
                                           "Name (Version) <Linked Against>"));
    QCOMPARE(lines.first().indexOf(QLatin1String("Name (Version)")), 52);
    static const QRegularExpression row(
        QStringLiteral("^ {0,4}\\d+ {1,4}\\d+ (0x[0-9a-f]+|0) +(0x[0-9a-f]+|0) +(0x[0-9a-f]+|0) +"
                       "\\S+ \\([^)]+\\)( <\\d+( \\d+)*>)?$"));
    for (const QString &line : lines.mid(1)) {
        QVERIFY2(row.match(line).hasMatch(), qPrintable(line));
        QVERIFY2(line.at(51) == QLatin1Char(' ') && line.at(52) != QLatin1Char(' '),
                 qPrintable(line));
    }
    QVERIFY(lines.contains(QStringLiteral(
        "    1    0 0                  0          0          com.sandboxmac.kpi.bsd (10.8.0)")));
    QCOMPARE(m_sandbox.logLines(),
             QStringList{m_sandbox.logLine(QStringLiteral("/usr/sbin/kextstat"), {})});
}

void TestStandIns::loadAndUnload_data() {
    QTest::addColumn<QString>("tool");
    QTest::addColumn<QString>("bundle");
    QTest::addColumn<QString>("error"); // %1: the bundle's path
    QTest::addColumn<QString>("identifier");
    QTest::addColumn<bool>("loadedAfter");
    const QString tail =
        QStringLiteral("; check the system/kernel logs for errors or try kextutil(8).\n");
    QTest::newRow("load a fat kext") << "/sbin/kextload"
                                     << "/Extra/Extensions/ExampleDiskShim.kext"
                                     << ""
                                     << "org.example.driver.DiskShim" << true;
    QTest::newRow("load an i386-only kext")
        << "/sbin/kextload"
        << "/Extra/Extensions/ExampleEthernet.kext"
        << "%1 failed to load - (libkern/kext) not loadable (reason unspecified)" + tail
        << "org.example.driver.Ethernet" << false;
    QTest::newRow("load a ppc kext")
        << "/sbin/kextload"
        << "/System/Library/Extensions/SandboxLegacyVideo.kext"
        << "%1 failed to load - (libkern/kext) not loadable (reason unspecified)" + tail
        << "com.sandboxmac.driver.LegacyVideo" << false;
    QTest::newRow("load a codeless kext") << "/sbin/kextload"
                                          << "/System/Library/Extensions/SandboxNVRAM.kext"
                                          << ""
                                          << "com.sandboxmac.driver.NVRAM" << true;
    QTest::newRow("load a folder that is no kext")
        << "/sbin/kextload"
        << "/Volumes/Data/Documents"
        << "%1 failed to load - (libkern/kext) not a kext" + tail << "" << false;
    QTest::newRow("load one already loaded") << "/sbin/kextload"
                                             << "/System/Library/Extensions/SandboxRTC.kext"
                                             << ""
                                             << "com.sandboxmac.driver.RTC" << true;
    QTest::newRow("unload a leaf")
        << "/sbin/kextunload"
        << "/Extra/Extensions/ExampleSensors.kext/Contents/PlugIns/ExampleCPUTemp.kext"
        << ""
        << "org.example.driver.CPUTemp" << false;
    QTest::newRow("unload a family in use")
        << "/sbin/kextunload"
        << "/System/Library/Extensions/SandboxUSBFamily.kext"
        << "Failed to unload com.sandboxmac.iokit.USBFamily - (libkern/kext) kext is in use or "
           "retained (cannot unload).\n"
        << "com.sandboxmac.iokit.USBFamily" << true;
    QTest::newRow("unload a kernel interface")
        << "/sbin/kextunload"
        << "/System/Library/Extensions/KernelInterfaces.kext/Contents/PlugIns/BSD.kext"
        << "Failed to unload com.sandboxmac.kpi.bsd - (libkern/kext) kext is in use or "
           "retained (cannot unload).\n"
        << "com.sandboxmac.kpi.bsd" << true;
    QTest::newRow("unload one not loaded")
        << "/sbin/kextunload"
        << "/System/Library/Extensions/SandboxFireWireFamily.kext"
        << "Failed to unload com.sandboxmac.iokit.FireWireFamily - (libkern/kext) not found.\n"
        << "com.sandboxmac.iokit.FireWireFamily" << false;
    QTest::newRow("unload a folder that is no kext")
        << "/sbin/kextunload"
        << "/Volumes/Data/Documents"
        << "Failed to unload %1 - (libkern/kext) not a kext.\n"
        << "" << false;
}

void TestStandIns::loadAndUnload() {
    QFETCH(QString, tool);
    QFETCH(QString, bundle);
    QFETCH(QString, error);
    QFETCH(QString, identifier);
    QFETCH(bool, loadedAfter);
    const QString path = m_sandbox.path(bundle);
    const SandboxFixture::Run run = m_sandbox.run(tool, {path});
    QCOMPARE(QString::fromUtf8(run.err), QString(error).replace(QStringLiteral("%1"), path));
    QCOMPARE(run.out, QByteArray());
    QCOMPARE(run.status, error.isEmpty() ? 0 : 1);
    if (!identifier.isEmpty())
        QCOMPARE(loadedIdentifiers().contains(identifier), loadedAfter);
    QCOMPARE(m_sandbox.logLines(), QStringList{m_sandbox.logLine(tool, {path})});
}

void TestStandIns::loadingPullsInLibraries() {
    const QString bundle =
        writeKext(QStringLiteral("Needs FireWire"), QStringLiteral("org.test.NeedsFireWire"),
                  QStringLiteral("com.sandboxmac.iokit.FireWireFamily"));
    QCOMPARE(m_sandbox.run(QStringLiteral("/sbin/kextload"), {bundle}).err, QByteArray());
    const QList<LoadedKext> kexts = LoadedKextState(m_sandbox.root()).read();
    const LoadedKext *family =
        LoadedKextState::find(kexts, QStringLiteral("com.sandboxmac.iokit.FireWireFamily"));
    const LoadedKext *kext = LoadedKextState::find(kexts, QStringLiteral("org.test.NeedsFireWire"));
    QVERIFY(family && kext);
    QCOMPARE(family->refs, 1);
    QCOMPARE(kext->links, QList<int>{family->index});
    QCOMPARE(kext->index, family->index + 1);

    const QString orphan = writeKext(QStringLiteral("Orphan"), QStringLiteral("org.test.Orphan"),
                                     QStringLiteral("org.test.NoSuchLibrary"));
    const SandboxFixture::Run run = m_sandbox.run(QStringLiteral("/sbin/kextload"), {orphan});
    QCOMPARE(QString::fromUtf8(run.err),
             orphan +
                 QStringLiteral(" failed to load - (libkern/kext) dependency resolution failure; "
                                "check the system/kernel logs for errors or try kextutil(8).\n"));
    QVERIFY(!loadedIdentifiers().contains(QStringLiteral("org.test.Orphan")));
}

void TestStandIns::unloadGivesBackReferences() {
    auto refs = [this] {
        const QList<LoadedKext> kexts = LoadedKextState(m_sandbox.root()).read();
        return LoadedKextState::find(kexts, QStringLiteral("com.sandboxmac.iokit.AudioFamily"))
            ->refs;
    };
    const int before = refs();
    QCOMPARE(m_sandbox
                 .run(QStringLiteral("/sbin/kextunload"),
                      {m_sandbox.path(QStringLiteral("/Extra/Extensions/ExampleAudioPatch.kext"))})
                 .status,
             0);
    QCOMPARE(refs(), before - 1);
    QCOMPARE(m_sandbox
                 .run(QStringLiteral("/sbin/kextload"),
                      {m_sandbox.path(QStringLiteral("/Extra/Extensions/ExampleAudioPatch.kext"))})
                 .status,
             0);
    QCOMPARE(refs(), before);
}

void TestStandIns::diskutilInfo_data() {
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("mountPoint"); // empty: diskutil knows no such disk
    QTest::newRow("started system") << "/Volumes/Macintosh HD"
                                    << "/";
    QTest::newRow("started system, trailing slash") << "/Volumes/Macintosh HD/"
                                                    << "/";
    QTest::newRow("the root itself") << ""
                                     << "/";
    QTest::newRow("Lion backup") << "/Volumes/Lion Backup"
                                 << "/Volumes/Lion Backup";
    QTest::newRow("data volume") << "/Volumes/Data"
                                 << "/Volumes/Data";
    QTest::newRow("a folder inside a volume") << "/Volumes/Data/Documents"
                                              << "";
    QTest::newRow("missing volume") << "/Volumes/Gone"
                                    << "";
}

void TestStandIns::diskutilInfo() {
    QFETCH(QString, path);
    QFETCH(QString, mountPoint);
    const QStringList args{QStringLiteral("info"), m_sandbox.path(path)};
    const SandboxFixture::Run run = m_sandbox.run(QStringLiteral("/usr/sbin/diskutil"), args);
    const QString out = QString::fromUtf8(run.out);
    QCOMPARE(diskInfoIsStartedSystem(out), mountPoint == QLatin1String("/"));
    if (mountPoint.isEmpty()) {
        QCOMPARE(out, QString());
        QCOMPARE(run.status, 1);
        QCOMPARE(QString::fromUtf8(run.err),
                 QStringLiteral("Could not find disk: %1\n").arg(args.last()));
    } else {
        QVERIFY(
            out.contains(QStringLiteral("\n   Mount Point:              ") + mountPoint + '\n'));
        QCOMPARE(run.status, 0);
    }
    QCOMPARE(m_sandbox.logLines(),
             QStringList{m_sandbox.logLine(QStringLiteral("/usr/sbin/diskutil"), args)});
}

void TestStandIns::repairPermissions() {
    const SandboxFixture::Run run = m_sandbox.run(
        QStringLiteral("/usr/sbin/diskutil"),
        {QStringLiteral("repairpermissions"), m_sandbox.volume(QStringLiteral("Lion Backup/"))});
    const QStringList lines =
        QString::fromUtf8(run.out).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QCOMPARE(lines.first(),
             QStringLiteral("Started verify/repair permissions on disk0s3 Lion Backup"));
    QCOMPARE(lines.last(),
             QStringLiteral("Finished verify/repair permissions on disk0s3 Lion Backup"));
}

void TestStandIns::systemProfiler_data() {
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QString>("heading");
    QTest::addColumn<QStringList>("keys");
    QTest::addColumn<QString>("firstValue");
    QTest::newRow("software")
        << QStringList{"SPSoftwareDataType"} << "Software:\n\n    System Software Overview:\n\n"
        << QStringList{"System Version",        "Kernel Version",
                       "Boot Volume",           "Boot Mode",
                       "Computer Name",         "User Name",
                       "Secure Virtual Memory", "64-bit Kernel and Extensions",
                       "Time since boot"}
        << "Mac OS X 10.6.8 (10K549)";
    QTest::newRow("hardware, no personal identifiers")
        << QStringList{"SPHardwareDataType", "-detailLevel", "mini"}
        << "Hardware:\n\n    Hardware Overview:\n\n"
        << QStringList{"Model Name",
                       "Model Identifier",
                       "Processor Name",
                       "Processor Speed",
                       "Number Of Processors",
                       "Total Number Of Cores",
                       "L2 Cache",
                       "Memory",
                       "Bus Speed",
                       "Boot ROM Version",
                       "SMC Version (system)"}
        << "Mac Pro";
}

void TestStandIns::systemProfiler() {
    QFETCH(QStringList, args);
    QFETCH(QString, heading);
    QFETCH(QStringList, keys);
    QFETCH(QString, firstValue);
    const QString out =
        QString::fromUtf8(m_sandbox.run(QStringLiteral("/usr/sbin/system_profiler"), args).out);
    QVERIFY2(out.startsWith(heading), qPrintable(out));
    QVERIFY(out.endsWith(QLatin1String("\n\n")));
    const QStringList lines = out.mid(heading.size()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QStringList seen;
    for (const QString &line : lines) {
        QVERIFY2(line.startsWith(QLatin1String("      ")) && line.at(6) != QLatin1Char(' '),
                 qPrintable(line));
        seen << line.mid(6).section(QStringLiteral(": "), 0, 0);
    }
    QCOMPARE(seen, keys);
    QCOMPARE(lines.first().section(QStringLiteral(": "), 1), firstValue);
}

void TestStandIns::fileDescriptions_data() {
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QString>("expected"); // %1: the sandbox root
    const QString ahci = QStringLiteral(
        "/System/Library/Extensions/SandboxAHCIPort.kext/Contents/MacOS/SandboxAHCIPort");
    QTest::newRow("universal, path on the slice lines")
        << QStringList{"-b", ahci}
        << "Mach-O universal binary with 2 architectures\n"
           "%1" +
               ahci +
               " (for architecture x86_64):\tMach-O 64-bit kext bundle x86_64\n"
               "%1" +
               ahci + " (for architecture i386):\tMach-O object i386\n";
    QTest::newRow("ppc object") << QStringList{"-b",
                                               "/System/Library/Extensions/SandboxLegacyVideo.kext/"
                                               "Contents/MacOS/SandboxLegacyVideo"}
                                << "Mach-O object ppc\n";
    QTest::newRow("not Mach-O") << QStringList{"-b",
                                               "/System/Library/CoreServices/SystemVersion.plist"}
                                << "data\n";
    QTest::newRow("a folder") << QStringList{"-b", "/Extra"} << "directory\n";
    QTest::newRow("missing") << QStringList{"-b", "/Extra/none"}
                             << "cannot open `%1/Extra/none' (No such file or directory)\n";
    QTest::newRow("without -b the path leads")
        << QStringList{"/System/Library/Extensions/SandboxEthernet.kext/Contents/MacOS/"
                       "SandboxEthernet"}
        << "%1/System/Library/Extensions/SandboxEthernet.kext/Contents/MacOS/SandboxEthernet: "
           "Mach-O object i386\n";
}

void TestStandIns::fileDescriptions() {
    QFETCH(QStringList, args);
    QFETCH(QString, expected);
    QStringList full;
    for (const QString &arg : args)
        full << (arg.startsWith(QLatin1Char('/')) ? m_sandbox.path(arg) : arg);
    QCOMPARE(QString::fromUtf8(m_sandbox.run(QStringLiteral("/usr/bin/file"), full).out),
             expected.replace(QStringLiteral("%1"), m_sandbox.root()));
}

void TestStandIns::kextlibs_data() {
    QTest::addColumn<QString>("bundle");
    QTest::addColumn<QString>("out");
    QTest::addColumn<QString>("err");
    QTest::newRow("libraries found, sorted") << "/Extra/Extensions/ExampleSensors.kext"
                                             << "    com.sandboxmac.driver.ACPIPlatform = 1.3.6\n"
                                                "    com.sandboxmac.kpi.iokit = 10.8.0\n"
                                                "    com.sandboxmac.kpi.libkern = 10.8.0\n"
                                             << "For all architectures:\n\n";
    QTest::newRow("no libraries") << "/System/Library/Extensions/SandboxNVRAM.kext"
                                  << "    No libraries found.\n"
                                  << "For all architectures:\n\n";
    QTest::newRow("a library nowhere") << "/tmp/it's Ü/Orphan.kext"
                                       << "    No libraries found.\n"
                                       << "For all architectures:\nFor x86_64:\n"
                                          "    3 symbols not found in any library kext.\n\n";
}

void TestStandIns::kextlibs() {
    QFETCH(QString, bundle);
    QFETCH(QString, out);
    QFETCH(QString, err);
    writeKext(QStringLiteral("Orphan"), QStringLiteral("org.test.Orphan"),
              QStringLiteral("org.test.None"));
    const SandboxFixture::Run run =
        m_sandbox.run(QStringLiteral("/usr/sbin/kextlibs"), {m_sandbox.path(bundle)});
    QCOMPARE(QString::fromUtf8(run.out), out);
    QCOMPARE(QString::fromUtf8(run.err), err);
}

void TestStandIns::hostToolsWithHostileNames() {
    const QString source = m_sandbox.path(QStringLiteral("/tmp/a $(touch pwned) 'ü'.kext"));
    const QString copy = m_sandbox.path(QStringLiteral("/tmp/copy; rm -rf x.kext"));
    const QString moved = m_sandbox.path(QStringLiteral("/tmp/moved \"it\".kext"));
    QVERIFY(QDir().mkpath(source + QStringLiteral("/Contents")));
    const QList<QPair<QString, QStringList>> runs{
        {QStringLiteral("/usr/bin/touch"), {source + QStringLiteral("/Contents/Info.plist")}},
        {QStringLiteral("/bin/chmod"), {QStringLiteral("-R"), QStringLiteral("755"), source}},
        {QStringLiteral("/bin/cp"), {QStringLiteral("-R"), source, copy}},
        {QStringLiteral("/bin/mv"), {copy, moved}},
        {QStringLiteral("/usr/sbin/chown"), {QStringLiteral("-R"), QStringLiteral("0:0"), moved}},
        {QStringLiteral("/bin/rm"), {QStringLiteral("-R"), source}},
    };
    QStringList expected;
    for (const auto &[tool, args] : runs) {
        const SandboxFixture::Run run = m_sandbox.run(tool, args);
        QVERIFY2(run.status == 0, qPrintable(tool + QLatin1Char(' ') + QString::fromUtf8(run.err)));
        expected << m_sandbox.logLine(tool, args);
    }
    QCOMPARE(m_sandbox.logLines(), expected);
    QVERIFY(!QFileInfo::exists(source));
    QVERIFY(!QFileInfo::exists(copy));
    QVERIFY(QFileInfo::exists(moved + QStringLiteral("/Contents/Info.plist")));
    QVERIFY(QFileInfo(moved).permissions().testFlag(QFile::ExeOther));
    QVERIFY(!QFileInfo::exists(QStringLiteral("pwned")));
    QVERIFY(!QFileInfo::exists(m_sandbox.path(QStringLiteral("/tmp/pwned"))));
    // Owners only change when the sandbox runs as root; otherwise the log is the effect.
    if (::geteuid() != 0)
        QCOMPARE(QFileInfo(moved).ownerId(), ::geteuid());
}

void TestStandIns::chflagsRecordsBesideTheFolder() {
    const QString extra = m_sandbox.volume(QStringLiteral("Macintosh HD/Extra"));
    const QString record = m_sandbox.volume(QStringLiteral("Macintosh HD/.Extra.flags"));
    for (const QString &flag : {QStringLiteral("hidden"), QStringLiteral("nohidden")}) {
        QCOMPARE(m_sandbox.run(QStringLiteral("/usr/bin/chflags"), {flag, extra}).status, 0);
        QFile file(record);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), flag.toUtf8() + '\n');
    }
    const SandboxFixture::Run missing =
        m_sandbox.run(QStringLiteral("/usr/bin/chflags"),
                      {QStringLiteral("hidden"), extra + QStringLiteral("/none")});
    QCOMPARE(missing.status, 1);
    QCOMPARE(m_sandbox.logLines().size(), 3);
}

void TestStandIns::systemCachesAreSilent_data() {
    QTest::addColumn<QString>("option");
    QTest::newRow("caches") << "-system-caches";
    QTest::newRow("prelinked kernel") << "-system-prelinked-kernel";
}

void TestStandIns::systemCachesAreSilent() {
    QFETCH(QString, option);
    const SandboxFixture::Run run = m_sandbox.run(QStringLiteral("/usr/sbin/kextcache"), {option});
    QCOMPARE(run.status, 0);
    QCOMPARE(run.out + run.err, QByteArray());
    QCOMPARE(m_sandbox.logLines(),
             QStringList{m_sandbox.logLine(QStringLiteral("/usr/sbin/kextcache"), {option})});
}

void TestStandIns::mkextRoundTrip() {
    const QString mkext = m_sandbox.path(QStringLiteral("/tmp/out 'x'.mkext"));
    QDir().mkpath(m_sandbox.path(QStringLiteral("/tmp")));
    const QStringList build{QStringLiteral("-v"),
                            QStringLiteral("1"),
                            QStringLiteral("-a"),
                            QStringLiteral("i386"),
                            QStringLiteral("-a"),
                            QStringLiteral("x86_64"),
                            QStringLiteral("-m"),
                            mkext,
                            m_sandbox.path(QStringLiteral("/Extra/Extensions"))};
    const SandboxFixture::Run built = m_sandbox.run(QStringLiteral("/usr/sbin/kextcache"), build);
    QCOMPARE(QString::fromUtf8(built.err),
             QStringLiteral("Created mkext archive %1.\n").arg(mkext));
    QVERIFY(QFileInfo(mkext).size() > 0);

    const SandboxFixture::Run listed =
        m_sandbox.run(QStringLiteral("/usr/sbin/mkextunpack"), {QStringLiteral("-v"), mkext});
    // Which slice the listing reads is the mkext code's business; the heading must count
    // the lines that follow it.
    const QStringList lines =
        QString::fromUtf8(listed.out).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QVERIFY(!lines.isEmpty());
    QCOMPARE(lines.first(), QStringLiteral("Found %1 kexts:").arg(lines.size() - 1));
    QVERIFY(listed.out.contains(" - org.example.driver.CPUTemp (3.4.1)\n"));

    const QString folder = m_sandbox.path(QStringLiteral("/tmp/unpacked Ü"));
    QDir().mkpath(folder);
    const QStringList unpack{QStringLiteral("-a"), QStringLiteral("x86_64"), QStringLiteral("-d"),
                             folder, mkext};
    const SandboxFixture::Run unpacked =
        m_sandbox.run(QStringLiteral("/usr/sbin/mkextunpack"), unpack);
    QCOMPARE(unpacked.err, QByteArray());
    QVERIFY(QFileInfo::exists(folder + QStringLiteral("/ExampleSensors.kext/Contents/Info.plist")));

    const SandboxFixture::Run ppc = m_sandbox.run(
        QStringLiteral("/usr/sbin/mkextunpack"),
        {QStringLiteral("-a"), QStringLiteral("ppc"), QStringLiteral("-d"), folder, mkext});
    QCOMPARE(ppc.err, QByteArray("Architecture ppc not found in mkext.\n"));
    QCOMPARE(m_sandbox.logLines(),
             (QStringList{m_sandbox.logLine(QStringLiteral("/usr/sbin/kextcache"), build),
                          m_sandbox.logLine(QStringLiteral("/usr/sbin/mkextunpack"),
                                            {QStringLiteral("-v"), mkext}),
                          m_sandbox.logLine(QStringLiteral("/usr/sbin/mkextunpack"), unpack),
                          m_sandbox.logLine(QStringLiteral("/usr/sbin/mkextunpack"),
                                            {QStringLiteral("-a"), QStringLiteral("ppc"),
                                             QStringLiteral("-d"), folder, mkext})}));
}

QTEST_GUILESS_MAIN(TestStandIns)
#include "tst_standins.moc"

#include "SandboxFixture.h"
#include "inspect/MachODescriber.h"
#include "plist/PlistFile.h"
#include "sandbox/KextBundleInfo.h"
#include "sandbox/LoadedKextState.h"
#include "sandbox/SandboxCatalog.h"
#include "volumes/DiskInfo.h"
#include "volumes/SystemPaths.h"
#include "volumes/VolumeList.h"

#include <QDir>
#include <QFileInfo>
#include <filesystem>
#include <unistd.h>

// The tree `sandbox create` makes, which a newcomer and the end-to-end tests rely on, and
// its stand-ins as real processes where the end-to-end tasks do not reach: the tools' error
// texts, library bookkeeping, the volumes diskutil knows, and hostile names in the host tools.
class TestSandbox : public QObject {
    Q_OBJECT

    SandboxFixture m_sandbox;
    QList<LoadedKext> m_loaded;

    const LoadedKext *loaded(const QString &identifier) {
        m_loaded = LoadedKextState(m_sandbox.root()).read();
        return LoadedKextState::find(m_loaded, identifier);
    }

    // A kext of the test's own, org.test.<name without blanks>, in a folder with a hostile
    // name outside the system folders.
    QString writeKext(QString name, const QByteArray &entries) {
        const QString bundle = m_sandbox.path("/tmp/it's Ü/" + name + ".kext");
        writePlist(bundle + "/Contents/Info.plist",
                   "<key>CFBundleIdentifier</key><string>org.test." + name.remove(' ').toUtf8() +
                       "</string><key>CFBundleVersion</key><string>1.0</string>" + entries);
        return bundle;
    }
    static QByteArray needs(const QByteArray &library) {
        return "<key>OSBundleLibraries</key><dict><key>" + library +
               "</key><string>1.0.0</string></dict>";
    }

private slots:
    void initTestCase() {
        QVERIFY(m_sandbox.create());
        writeKext("Orphan", needs("org.test.NoSuchLibrary"));
        writeKext("Hollow", "<key>CFBundleExecutable</key><string>Hollow</string>");
    }

    void init() {
        QVERIFY(LoadedKextState(m_sandbox.root()).write(LoadedKextState::initial()));
        m_sandbox.clearLog();
    }

    void volumesVersionsAndExtraFolders() {
        QStringList volumes = VolumeList::build(SystemPaths(m_sandbox.root()).volumesDir());
        volumes.sort();
        QCOMPARE(volumes, (QStringList{"Lion Backup", "Macintosh HD"}));
        // The started system is a relative link to the root, so the sandbox can be moved whole.
        const auto link =
            std::filesystem::read_symlink(m_sandbox.volume("Macintosh HD").toStdString());
        QCOMPARE(QString::fromStdString(link.string()), "..");
        const auto lion = PlistFile::readDictionary(
            m_sandbox.volume("Lion Backup/System/Library/CoreServices/SystemVersion.plist"));
        QVERIFY(lion);
        QCOMPARE(PlistFile::string(*lion, "ProductVersion"),
                 std::optional(QStringLiteral("10.7.4")));
        // Each layout of the Extra folder once: a version folder, KextStore, none at all.
        QStringList present;
        for (const QString folder :
             {"Macintosh HD/Extra/10.6/Extensions", "Macintosh HD/Extra/KextStore",
              "Lion Backup/Extra/KextStore", "Lion Backup/Extra/Extensions", "Data/Extra"})
            if (QFileInfo::exists(m_sandbox.volume(folder)))
                present << folder;
        QCOMPARE(present, (QStringList{"Macintosh HD/Extra/10.6/Extensions",
                                       "Lion Backup/Extra/KextStore"}));
    }

    void kextBundles_data() {
        QTest::addColumn<QString>("bundle");
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<QString>("executable"); // relative to the bundle
        QTest::addColumn<QString>("description");
        QTest::newRow("thin i386 object") << "SandboxEthernet.kext"
                                          << "com.sandboxmac.driver.Ethernet"
                                          << "Contents/MacOS/SandboxEthernet"
                                          << "Mach-O object i386\n";
        QTest::newRow("thin ppc object") << "SandboxLegacyVideo.kext"
                                         << "com.sandboxmac.driver.LegacyVideo"
                                         << "Contents/MacOS/SandboxLegacyVideo"
                                         << "Mach-O object ppc\n";
        QTest::newRow("old-style bundle") << "SandboxOldSerial.kext"
                                          << "com.sandboxmac.driver.OldSerial"
                                          << "SandboxOldSerial"
                                          << "Mach-O object i386\n";
    }

    void kextBundles() {
        QFETCH(QString, bundle);
        QFETCH(QString, identifier);
        QFETCH(QString, executable);
        QFETCH(QString, description);
        const QString path = m_sandbox.path("/System/Library/Extensions/" + bundle);
        const std::optional<KextBundleInfo> info = KextBundleInfo::read(path);
        QVERIFY(info);
        QCOMPARE(info->identifier, identifier);
        QVERIFY(!info->version.isEmpty());
        QCOMPARE(info->executablePath, path + '/' + executable);
        QCOMPARE(MachODescriber::describe(info->executablePath), description);
    }

    void everyLibraryIsOnTheSameVolume() {
        // A kext whose library is missing could never be test-loaded in the sandbox.
        const auto system = KextBundleInfo::index(m_sandbox.path("/System/Library/Extensions"));
        const auto lion =
            KextBundleInfo::index(m_sandbox.volume("Lion Backup/System/Library/Extensions"));
        QVERIFY2(system.size() >= 30, qPrintable(QString::number(system.size())));
        for (const SandboxKext &kext : SandboxCatalog::kexts()) {
            const auto info = KextBundleInfo::read(m_sandbox.path('/' + kext.path));
            QVERIFY2(info, qPrintable(kext.path));
            const auto &available = kext.path.startsWith("Volumes/") ? lion : system;
            for (const auto &library : info->libraries)
                QVERIFY2(available.contains(library.first),
                         qPrintable(kext.path + " needs " + library.first));
        }
    }

    void loadedListIsConsistent() {
        const QList<LoadedKext> kexts = LoadedKextState(m_sandbox.root()).read();
        QVERIFY(kexts.size() > 20);
        QHash<int, int> linkers;
        for (const LoadedKext &kext : kexts) {
            for (int link : kext.links) {
                QVERIFY2(link < kext.index, qPrintable(kext.identifier));
                ++linkers[link];
            }
            QVERIFY(std::is_sorted(kext.links.begin(), kext.links.end(), std::greater<int>()));
        }
        for (const LoadedKext &kext : kexts)
            QCOMPARE(kext.refs, linkers.value(kext.index));
    }

    void refusesAFolderInUse() {
        QTemporaryDir dir;
        QVERIFY(writePlist(dir.filePath("keep.plist"), "<key>Mine</key><true/>"));
        SandboxBuilder builder(dir.path(), KK_BINARY);
        QVERIFY(!builder.create());
        QVERIFY(builder.error().contains(dir.path()));
        QCOMPARE(QDir(dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList{"keep.plist"});
    }

    void toolsAnswerAsOnAMac_data() {
        QTest::addColumn<QString>("tool");
        QTest::addColumn<QStringList>("args"); // words from "/" on lie inside the sandbox
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("out");
        QTest::addColumn<QString>("err");    // %1: the last word
        QTest::addColumn<int>("moreLoaded"); // kexts loaded afterwards, less those before
        auto row = [](const char *name, const QString &tool, const QStringList &args, int status,
                      const QString &out, const QString &err, int moreLoaded = 0) {
            QTest::newRow(name) << tool << args << status << out << err << moreLoaded;
        };
        const QString load = "/sbin/kextload", unload = "/sbin/kextunload";
        const QString libs = "/usr/sbin/kextlibs", diskutil = "/usr/sbin/diskutil";
        const QString sle = "/System/Library/Extensions/";
        const QString failed = "%1 failed to load - (libkern/kext) %2; check the "
                               "system/kernel logs for errors or try kextutil(8).\n";
        row("load a codeless kext", load, {sle + "SandboxNVRAM.kext"}, 0, "", "", 1);
        row("load one already loaded", load, {sle + "SandboxRTC.kext"}, 0, "", "");
        row("load a folder that is no kext", load, {"/Volumes/Data/Documents"}, 1, "",
            failed.arg("%1", "not a kext"));
        row("load with a library nowhere", load, {"/tmp/it's Ü/Orphan.kext"}, 1, "",
            failed.arg("%1", "dependency resolution failure"));
        row("load without its executable", load, {"/tmp/it's Ü/Hollow.kext"}, 1, "",
            failed.arg("%1", "validation failure (plist/executable)"));
        row("load without a path", load, {}, 1, "",
            "No kernel extensions specified; name kernel extension bundles\n"
            "    following the -- option or as command-line arguments.\n");
        row("unload one not loaded", unload, {sle + "SandboxFireWireFamily.kext"}, 1, "",
            "Failed to unload com.sandboxmac.iokit.FireWireFamily - (libkern/kext) not found.\n");
        row("unload a folder that is no kext", unload, {"/Volumes/Data/Documents"}, 1, "",
            "Failed to unload %1 - (libkern/kext) not a kext.\n");
        const QString noLibraries = "    No libraries found.\n";
        row("libraries found, sorted", libs, {"/Extra/Extensions/ExampleSensors.kext"}, 0,
            "    com.sandboxmac.driver.ACPIPlatform = 1.3.6\n"
            "    com.sandboxmac.kpi.iokit = 10.8.0\n    com.sandboxmac.kpi.libkern = 10.8.0\n",
            "For all architectures:\n\n");
        row("no libraries", libs, {sle + "SandboxNVRAM.kext"}, 0, noLibraries,
            "For all architectures:\n\n");
        row("a library nowhere", libs, {"/tmp/it's Ü/Orphan.kext"}, 0, noLibraries,
            "For all architectures:\nFor x86_64:\n    3 symbols not found in any library "
            "kext.\n\n");
        row("diskutil on a folder inside a volume", diskutil, {"info", "/Volumes/Data/Documents"},
            1, "", "Could not find disk: %1\n");
        row("diskutil on a missing volume", diskutil, {"info", "/Volumes/Gone"}, 1, "",
            "Could not find disk: %1\n");
        row("chflags on a missing item", "/usr/bin/chflags",
            {"hidden", "/Volumes/Macintosh HD/Extra/none"}, 1, "",
            "chflags: %1: No such file or directory\n");
        row("mkextunpack of a missing architecture", "/usr/sbin/mkextunpack",
            {"-a", "ppc", "-d", "/tmp", "/Extra/Extensions.mkext"}, 1, "",
            "Architecture ppc not found in mkext.\n");
    }

    void toolsAnswerAsOnAMac() {
        QFETCH(QString, tool);
        QFETCH(QStringList, args);
        QFETCH(int, status);
        QFETCH(QString, out);
        QFETCH(QString, err);
        QFETCH(int, moreLoaded);
        for (QString &arg : args)
            if (arg.startsWith('/'))
                arg = m_sandbox.path(arg);
        const qsizetype before = LoadedKextState(m_sandbox.root()).read().size();
        const CliRun run = m_sandbox.run(tool, args);
        QCOMPARE(run.out, out);
        QCOMPARE(run.err, err.replace("%1", args.value(args.size() - 1)));
        QCOMPARE(run.status, status);
        QCOMPARE(LoadedKextState(m_sandbox.root()).read().size(), before + moreLoaded);
        QCOMPARE(m_sandbox.logLines(), QStringList{m_sandbox.logLine(tool, args)});
    }

    void librariesAndReferences() {
        const QString family = "com.sandboxmac.iokit.FireWireFamily";
        const QString bundle = writeKext("Needs FireWire", needs(family.toUtf8()));
        QCOMPARE(m_sandbox.run("/sbin/kextload", {bundle}).err, QString());
        QVERIFY(loaded(family));
        const int familyIndex = loaded(family)->index;
        QCOMPARE(loaded(family)->refs, 1);
        const LoadedKext *kext = loaded("org.test.NeedsFireWire");
        QVERIFY(kext);
        QCOMPARE(kext->links, QList<int>{familyIndex});
        QCOMPARE(kext->index, familyIndex + 1);
        // Unloading gives the reference back.
        QCOMPARE(m_sandbox.run("/sbin/kextunload", {bundle}).status, 0);
        QCOMPARE(loaded(family)->refs, 0);
    }

    // The started system's answer is read end to end; another volume's must not look like it.
    void diskutilOnAnotherVolume() {
        const CliRun run =
            m_sandbox.run("/usr/sbin/diskutil", {"info", m_sandbox.volume("Lion Backup")});
        QCOMPARE(run.status, 0);
        QVERIFY(run.out.contains("\n   Mount Point:              /Volumes/Lion Backup\n"));
        QVERIFY(!diskInfoIsStartedSystem(run.out));
    }

    void hostToolsWithHostileNames() {
        const QString source = m_sandbox.path("/tmp/a $(touch pwned) 'ü'.kext");
        const QString copy = m_sandbox.path("/tmp/copy; rm -rf x.kext");
        const QString moved = m_sandbox.path("/tmp/moved \"it\".kext");
        QVERIFY(QDir().mkpath(source + "/Contents"));
        const QList<QPair<QString, QStringList>> runs{
            {"/usr/bin/touch", {source + "/Contents/Info.plist"}},
            {"/bin/chmod", {"-R", "755", source}},
            {"/bin/cp", {"-R", source, copy}},
            {"/bin/mv", {copy, moved}},
            {"/usr/sbin/chown", {"-R", "0:0", moved}},
            {"/bin/rm", {"-R", source}},
        };
        QStringList expected;
        for (const auto &[tool, args] : runs) {
            const CliRun run = m_sandbox.run(tool, args);
            QVERIFY2(run.status == 0, qPrintable(tool + ' ' + run.err));
            expected << m_sandbox.logLine(tool, args);
        }
        QCOMPARE(m_sandbox.logLines(), expected);
        QVERIFY(!QFileInfo::exists(source));
        QVERIFY(!QFileInfo::exists(copy));
        QVERIFY(QFileInfo::exists(moved + "/Contents/Info.plist"));
        QVERIFY(QFileInfo(moved).permissions().testFlag(QFile::ExeOther));
        QVERIFY(!QFileInfo::exists("pwned"));
        QVERIFY(!QFileInfo::exists(m_sandbox.path("/tmp/pwned")));
        // Owners only change when the sandbox runs as root; otherwise the log is the effect.
        if (::geteuid() != 0)
            QCOMPARE(QFileInfo(moved).ownerId(), ::geteuid());
    }

    void chflagsRecordsBesideTheFolder() {
        const QString extra = m_sandbox.volume("Macintosh HD/Extra");
        QFile record(m_sandbox.volume("Macintosh HD/.Extra.flags"));
        for (const QString flag : {"hidden", "nohidden"}) {
            QCOMPARE(m_sandbox.run("/usr/bin/chflags", {flag, extra}).status, 0);
            QVERIFY(record.open(QIODevice::ReadOnly));
            QCOMPARE(record.readAll(), flag.toUtf8() + '\n');
            record.close();
        }
    }
};

QTEST_GUILESS_MAIN(TestSandbox)
#include "tst_sandbox.moc"

#include "SandboxFixture.h"
#include "plist/PlistFile.h"
#include "sandbox/LoadedKextState.h"
#include "volumes/DiskInfo.h"

#include <QDir>
#include <QFileInfo>
#include <unistd.h>

// The stand-ins as real processes, where the end-to-end tasks do not reach: the tools' error
// texts, library bookkeeping, the volumes diskutil knows, and hostile names in the host tools.
class TestStandIns : public QObject {
    Q_OBJECT

    SandboxFixture m_sandbox;
    QList<LoadedKext> m_loaded;

    const LoadedKext *loaded(const QString &identifier) {
        m_loaded = LoadedKextState(m_sandbox.root()).read();
        return LoadedKextState::find(m_loaded, identifier);
    }

    // A kext of the test's own, in a folder with a hostile name outside the system folders.
    QString writeKext(const QString &name, const QString &identifier, const QString &library) {
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

private slots:
    void initTestCase() {
        QVERIFY(m_sandbox.create());
        writeKext(QStringLiteral("Orphan"), QStringLiteral("org.test.Orphan"),
                  QStringLiteral("org.test.NoSuchLibrary"));
    }

    void init() {
        QVERIFY(LoadedKextState(m_sandbox.root()).write(LoadedKextState::initial()));
        m_sandbox.clearLog();
    }

    void loadAndUnload_data() {
        QTest::addColumn<QString>("tool");
        QTest::addColumn<QString>("bundle");
        QTest::addColumn<QString>("error"); // %1: the bundle's path
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<bool>("loadedAfter");
        auto row = [](const char *name, const char *tool, const char *bundle, const QString &error,
                      const char *identifier, bool loadedAfter) {
            QTest::newRow(name) << QString::fromLatin1(tool) << QString::fromUtf8(bundle) << error
                                << QString::fromLatin1(identifier) << loadedAfter;
        };
        const QString failed =
            QStringLiteral("%1 failed to load - (libkern/kext) %2; check the "
                           "system/kernel logs for errors or try kextutil(8).\n");
        row("load a codeless kext", "/sbin/kextload",
            "/System/Library/Extensions/SandboxNVRAM.kext", {}, "com.sandboxmac.driver.NVRAM",
            true);
        row("load a folder that is no kext", "/sbin/kextload", "/Volumes/Data/Documents",
            failed.arg("%1", "not a kext"), "", false);
        row("load one already loaded", "/sbin/kextload",
            "/System/Library/Extensions/SandboxRTC.kext", {}, "com.sandboxmac.driver.RTC", true);
        row("load with a library nowhere", "/sbin/kextload", "/tmp/it's Ü/Orphan.kext",
            failed.arg("%1", "dependency resolution failure"), "org.test.Orphan", false);
        row("unload one not loaded", "/sbin/kextunload",
            "/System/Library/Extensions/SandboxFireWireFamily.kext",
            "Failed to unload com.sandboxmac.iokit.FireWireFamily - (libkern/kext) not found.\n",
            "com.sandboxmac.iokit.FireWireFamily", false);
        row("unload a folder that is no kext", "/sbin/kextunload", "/Volumes/Data/Documents",
            "Failed to unload %1 - (libkern/kext) not a kext.\n", "", false);
    }

    void loadAndUnload() {
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
            QCOMPARE(loaded(identifier) != nullptr, loadedAfter);
        QCOMPARE(m_sandbox.logLines(), QStringList{m_sandbox.logLine(tool, {path})});
    }

    void librariesAndReferences() {
        const QString family = QStringLiteral("com.sandboxmac.iokit.FireWireFamily");
        const QString bundle = writeKext(QStringLiteral("Needs FireWire"),
                                         QStringLiteral("org.test.NeedsFireWire"), family);
        QCOMPARE(m_sandbox.run(QStringLiteral("/sbin/kextload"), {bundle}).err, QByteArray());
        QVERIFY(loaded(family));
        const int familyIndex = loaded(family)->index;
        QCOMPARE(loaded(family)->refs, 1);
        const LoadedKext *kext = loaded(QStringLiteral("org.test.NeedsFireWire"));
        QVERIFY(kext);
        QCOMPARE(kext->links, QList<int>{familyIndex});
        QCOMPARE(kext->index, familyIndex + 1);
        // Unloading gives the reference back.
        QCOMPARE(m_sandbox.run(QStringLiteral("/sbin/kextunload"), {bundle}).status, 0);
        QCOMPARE(loaded(family)->refs, 0);
    }

    void diskutilInfo_data() {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("mountPoint"); // empty: diskutil knows no such disk
        QTest::newRow("Lion backup")
            << QStringLiteral("/Volumes/Lion Backup") << QStringLiteral("/Volumes/Lion Backup");
        QTest::newRow("a folder inside a volume")
            << QStringLiteral("/Volumes/Data/Documents") << QString();
        QTest::newRow("missing volume") << QStringLiteral("/Volumes/Gone") << QString();
    }

    void diskutilInfo() {
        QFETCH(QString, path);
        QFETCH(QString, mountPoint);
        const QStringList args{QStringLiteral("info"), m_sandbox.path(path)};
        const SandboxFixture::Run run = m_sandbox.run(QStringLiteral("/usr/sbin/diskutil"), args);
        const QString out = QString::fromUtf8(run.out);
        // The started system's answer is read end to end; no other volume may look like it.
        QVERIFY(!diskInfoIsStartedSystem(out));
        QCOMPARE(run.status, mountPoint.isEmpty() ? 1 : 0);
        if (mountPoint.isEmpty()) {
            QCOMPARE(out, QString());
            QCOMPARE(QString::fromUtf8(run.err),
                     QStringLiteral("Could not find disk: %1\n").arg(args.last()));
        } else {
            QVERIFY(out.contains(QStringLiteral("\n   Mount Point:              ") + mountPoint +
                                 '\n'));
        }
    }

    void kextlibs_data() {
        QTest::addColumn<QString>("bundle");
        QTest::addColumn<QString>("out");
        QTest::addColumn<QString>("err");
        QTest::newRow("libraries found, sorted")
            << "/Extra/Extensions/ExampleSensors.kext"
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

    void kextlibs() {
        QFETCH(QString, bundle);
        QFETCH(QString, out);
        QFETCH(QString, err);
        const SandboxFixture::Run run =
            m_sandbox.run(QStringLiteral("/usr/sbin/kextlibs"), {m_sandbox.path(bundle)});
        QCOMPARE(QString::fromUtf8(run.out), out);
        QCOMPARE(QString::fromUtf8(run.err), err);
    }

    void hostToolsWithHostileNames() {
        const QString source = m_sandbox.path(QStringLiteral("/tmp/a $(touch pwned) 'ü'.kext"));
        const QString copy = m_sandbox.path(QStringLiteral("/tmp/copy; rm -rf x.kext"));
        const QString moved = m_sandbox.path(QStringLiteral("/tmp/moved \"it\".kext"));
        QVERIFY(QDir().mkpath(source + QStringLiteral("/Contents")));
        const QList<QPair<QString, QStringList>> runs{
            {QStringLiteral("/usr/bin/touch"), {source + QStringLiteral("/Contents/Info.plist")}},
            {QStringLiteral("/bin/chmod"), {QStringLiteral("-R"), QStringLiteral("755"), source}},
            {QStringLiteral("/bin/cp"), {QStringLiteral("-R"), source, copy}},
            {QStringLiteral("/bin/mv"), {copy, moved}},
            {QStringLiteral("/usr/sbin/chown"),
             {QStringLiteral("-R"), QStringLiteral("0:0"), moved}},
            {QStringLiteral("/bin/rm"), {QStringLiteral("-R"), source}},
        };
        QStringList expected;
        for (const auto &[tool, args] : runs) {
            const SandboxFixture::Run run = m_sandbox.run(tool, args);
            QVERIFY2(run.status == 0,
                     qPrintable(tool + QLatin1Char(' ') + QString::fromUtf8(run.err)));
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

    void chflagsRecordsBesideTheFolder() {
        const QString chflags = QStringLiteral("/usr/bin/chflags");
        const QString extra = m_sandbox.volume(QStringLiteral("Macintosh HD/Extra"));
        QFile record(m_sandbox.volume(QStringLiteral("Macintosh HD/.Extra.flags")));
        for (const QString &flag : {QStringLiteral("hidden"), QStringLiteral("nohidden")}) {
            QCOMPARE(m_sandbox.run(chflags, {flag, extra}).status, 0);
            QVERIFY(record.open(QIODevice::ReadOnly));
            QCOMPARE(record.readAll(), flag.toUtf8() + '\n');
            record.close();
        }
        QCOMPARE(m_sandbox.run(chflags, {QStringLiteral("hidden"), extra + "/none"}).status, 1);
        QCOMPARE(m_sandbox.logLines().size(), 3);
    }

    void mkextunpackMissingArchitecture() {
        const QString mkext = m_sandbox.path(QStringLiteral("/Extra/Extensions.mkext"));
        const QStringList args{QStringLiteral("-a"), QStringLiteral("ppc"), QStringLiteral("-d"),
                               m_sandbox.path(QStringLiteral("/tmp")), mkext};
        const SandboxFixture::Run run =
            m_sandbox.run(QStringLiteral("/usr/sbin/mkextunpack"), args);
        QCOMPARE(run.err, QByteArray("Architecture ppc not found in mkext.\n"));
        QCOMPARE(run.status, 1);
        QCOMPARE(m_sandbox.logLines(),
                 QStringList{m_sandbox.logLine(QStringLiteral("/usr/sbin/mkextunpack"), args)});
    }
};

QTEST_GUILESS_MAIN(TestStandIns)
#include "tst_standins.moc"

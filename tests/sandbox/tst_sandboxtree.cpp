#include "SandboxFixture.h"
#include "inspect/MachODescriber.h"
#include "plist/PlistFile.h"
#include "sandbox/KextBundleInfo.h"
#include "sandbox/LoadedKextState.h"
#include "sandbox/SandboxCatalog.h"
#include "volumes/SystemPaths.h"
#include "volumes/VolumeList.h"

#include <QDir>
#include <QFileInfo>
#include <filesystem>

// The tree `sandbox create` makes: what a newcomer and the end-to-end tests rely on.
class TestSandboxTree : public QObject {
    Q_OBJECT

    SandboxFixture m_sandbox;

private slots:
    void initTestCase() { QVERIFY(m_sandbox.create()); }

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
        QTest::addColumn<QString>("executable"); // relative to the bundle; empty when codeless
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
        QTest::newRow("codeless plug-in") << "KernelInterfaces.kext/Contents/PlugIns/Libkern.kext"
                                          << "com.sandboxmac.kpi.libkern"
                                          << ""
                                          << "";
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
        if (executable.isEmpty()) {
            QVERIFY(info->executablePath.isEmpty());
            return;
        }
        QCOMPARE(info->executablePath, path + QLatin1Char('/') + executable);
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
};

QTEST_GUILESS_MAIN(TestSandboxTree)
#include "tst_sandboxtree.moc"

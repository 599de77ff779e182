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
        QCOMPARE(volumes,
                 (QStringList{QStringLiteral("Lion Backup"), QStringLiteral("Macintosh HD")}));
        // The started system is a relative link to the root, so the sandbox can be moved whole.
        QCOMPARE(QString::fromStdString(std::filesystem::read_symlink(
                     m_sandbox.volume(QStringLiteral("Macintosh HD")).toStdString())),
                 QStringLiteral(".."));
        const auto lion = PlistFile::readDictionary(m_sandbox.volume(
            QStringLiteral("Lion Backup/System/Library/CoreServices/SystemVersion.plist")));
        QVERIFY(lion);
        QCOMPARE(PlistFile::string(*lion, "ProductVersion"),
                 std::optional(QStringLiteral("10.7.4")));
        // Each layout of the Extra folder once: a version folder, KextStore, none at all.
        QStringList present;
        for (const char *folder :
             {"Macintosh HD/Extra/10.6/Extensions", "Macintosh HD/Extra/KextStore",
              "Lion Backup/Extra/KextStore", "Lion Backup/Extra/Extensions", "Data/Extra"})
            if (QFileInfo::exists(m_sandbox.volume(QString::fromLatin1(folder))))
                present << QString::fromLatin1(folder);
        QCOMPARE(present, (QStringList{"Macintosh HD/Extra/10.6/Extensions",
                                       "Lion Backup/Extra/KextStore"}));
    }

    void kextBundles_data() {
        QTest::addColumn<QString>("bundle");
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<QString>("executable"); // relative to the bundle; empty when codeless
        QTest::addColumn<QString>("description");
        auto row = [](const char *name, const char *bundle, const char *identifier,
                      const char *executable, const char *description) {
            QTest::newRow(name) << "/System/Library/Extensions/" + QString::fromLatin1(bundle)
                                << QString::fromLatin1(identifier)
                                << QString::fromLatin1(executable)
                                << QString::fromLatin1(description);
        };
        row("thin i386 object", "SandboxEthernet.kext", "com.sandboxmac.driver.Ethernet",
            "Contents/MacOS/SandboxEthernet", "Mach-O object i386\n");
        row("thin ppc object", "SandboxLegacyVideo.kext", "com.sandboxmac.driver.LegacyVideo",
            "Contents/MacOS/SandboxLegacyVideo", "Mach-O object ppc\n");
        row("old-style bundle", "SandboxOldSerial.kext", "com.sandboxmac.driver.OldSerial",
            "SandboxOldSerial", "Mach-O object i386\n");
        row("codeless plug-in", "KernelInterfaces.kext/Contents/PlugIns/Libkern.kext",
            "com.sandboxmac.kpi.libkern", "", "");
    }

    void kextBundles() {
        QFETCH(QString, bundle);
        QFETCH(QString, identifier);
        QFETCH(QString, executable);
        QFETCH(QString, description);
        const QString path = m_sandbox.path(bundle);
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
        const QMap<QString, QString> system =
            KextBundleInfo::index(m_sandbox.path(QStringLiteral("/System/Library/Extensions")));
        const QMap<QString, QString> lion = KextBundleInfo::index(
            m_sandbox.volume(QStringLiteral("Lion Backup/System/Library/Extensions")));
        QVERIFY2(system.size() >= 30, qPrintable(QString::number(system.size())));
        for (const SandboxKext &kext : SandboxCatalog::kexts()) {
            const std::optional<KextBundleInfo> info =
                KextBundleInfo::read(m_sandbox.path(QLatin1Char('/') + kext.path));
            QVERIFY2(info, qPrintable(kext.path));
            const auto &available = kext.path.startsWith(QLatin1String("Volumes/")) ? lion : system;
            for (const auto &library : info->libraries)
                QVERIFY2(available.contains(library.first),
                         qPrintable(kext.path + QStringLiteral(" needs ") + library.first));
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
        QFile keep(dir.filePath(QStringLiteral("keep.txt")));
        QVERIFY(keep.open(QIODevice::WriteOnly));
        keep.write("mine");
        keep.close();
        SandboxBuilder builder(dir.path(), QStringLiteral(KK_BINARY));
        QVERIFY(!builder.create());
        QVERIFY(builder.error().contains(dir.path()));
        QCOMPARE(QDir(dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 QStringList{QStringLiteral("keep.txt")});
    }
};

QTEST_GUILESS_MAIN(TestSandboxTree)
#include "tst_sandboxtree.moc"

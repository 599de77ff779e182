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
private slots:
    void initTestCase();
    void volumesOfferedByTheWindow();
    void startedSystemIsTheRoot();
    void systemVersions_data();
    void systemVersions();
    void kextFolders_data();
    void kextFolders();
    void kextBundles_data();
    void kextBundles();
    void everyLibraryIsOnTheSameVolume();
    void loadedListIsConsistent();
    void refusesAFolderInUse();

private:
    SandboxFixture m_sandbox;
};

void TestSandboxTree::initTestCase() {
    QVERIFY(m_sandbox.create());
}

void TestSandboxTree::volumesOfferedByTheWindow() {
    QStringList volumes = VolumeList::build(SystemPaths(m_sandbox.root()).volumesDir());
    volumes.sort();
    QCOMPARE(volumes, (QStringList{QStringLiteral("Lion Backup"), QStringLiteral("Macintosh HD")}));
}

void TestSandboxTree::startedSystemIsTheRoot() {
    const QFileInfo link(m_sandbox.volume(QStringLiteral("Macintosh HD")));
    QVERIFY(link.isSymLink());
    // Relative, so the sandbox can be moved as a whole.
    QCOMPARE(QString::fromStdString(std::filesystem::read_symlink(link.filePath().toStdString())),
             QStringLiteral(".."));
    QCOMPARE(QDir(m_sandbox.volume(QStringLiteral("Macintosh HD")) +
                  QStringLiteral("/System/Library/Extensions"))
                 .canonicalPath(),
             QDir(m_sandbox.path(QStringLiteral("/System/Library/Extensions"))).canonicalPath());
}

void TestSandboxTree::systemVersions_data() {
    QTest::addColumn<QString>("volume");
    QTest::addColumn<QString>("version");
    QTest::newRow("started system") << "Macintosh HD"
                                    << "10.6.8";
    QTest::newRow("Lion backup") << "Lion Backup"
                                 << "10.7.4";
}

void TestSandboxTree::systemVersions() {
    QFETCH(QString, volume);
    QFETCH(QString, version);
    const auto plist = PlistFile::readDictionary(
        m_sandbox.volume(volume) +
        QStringLiteral("/System/Library/CoreServices/SystemVersion.plist"));
    QVERIFY(plist);
    QCOMPARE(PlistFile::string(*plist, "ProductVersion").value_or(QString()), version);
}

void TestSandboxTree::kextFolders_data() {
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("exists");
    QTest::newRow("Extra Extensions") << "Macintosh HD/Extra/Extensions" << true;
    QTest::newRow("Extra mkext") << "Macintosh HD/Extra/Extensions.mkext" << true;
    QTest::newRow("version folder") << "Macintosh HD/Extra/10.6/Extensions" << true;
    QTest::newRow("no KextStore on the system") << "Macintosh HD/Extra/KextStore" << false;
    QTest::newRow("Lion KextStore") << "Lion Backup/Extra/KextStore" << true;
    QTest::newRow("Lion has no Extra Extensions") << "Lion Backup/Extra/Extensions" << false;
    QTest::newRow("Lion has no Extra mkext") << "Lion Backup/Extra/Extensions.mkext" << false;
    QTest::newRow("Data has no Extra") << "Data/Extra" << false;
    QTest::newRow("Data has no system") << "Data/System/Library" << false;
}

void TestSandboxTree::kextFolders() {
    QFETCH(QString, path);
    QFETCH(bool, exists);
    QCOMPARE(QFileInfo::exists(m_sandbox.volume(path)), exists);
}

void TestSandboxTree::kextBundles_data() {
    QTest::addColumn<QString>("bundle");
    QTest::addColumn<QString>("identifier");
    QTest::addColumn<QString>("executable"); // relative to the bundle; empty when codeless
    QTest::addColumn<QString>("description");
    const QString sle = QStringLiteral("/System/Library/Extensions/");
    QTest::newRow("fat x86_64 and i386")
        << sle + "SandboxAHCIPort.kext"
        << "com.sandboxmac.driver.AHCIPort"
        << "Contents/MacOS/SandboxAHCIPort"
        << "Mach-O universal binary with 2 architectures\n"
           "%1 (for architecture x86_64):\tMach-O 64-bit kext bundle x86_64\n"
           "%1 (for architecture i386):\tMach-O object i386\n";
    QTest::newRow("thin i386 object") << sle + "SandboxEthernet.kext"
                                      << "com.sandboxmac.driver.Ethernet"
                                      << "Contents/MacOS/SandboxEthernet"
                                      << "Mach-O object i386\n";
    QTest::newRow("thin x86_64") << sle + "SandboxFramebuffer.kext"
                                 << "com.sandboxmac.driver.Framebuffer"
                                 << "Contents/MacOS/SandboxFramebuffer"
                                 << "Mach-O 64-bit kext bundle x86_64\n";
    QTest::newRow("thin ppc object") << sle + "SandboxLegacyVideo.kext"
                                     << "com.sandboxmac.driver.LegacyVideo"
                                     << "Contents/MacOS/SandboxLegacyVideo"
                                     << "Mach-O object ppc\n";
    QTest::newRow("old-style bundle") << sle + "SandboxOldSerial.kext"
                                      << "com.sandboxmac.driver.OldSerial"
                                      << "SandboxOldSerial"
                                      << "Mach-O object i386\n";
    QTest::newRow("codeless plug-in") << sle + "KernelInterfaces.kext/Contents/PlugIns/Libkern.kext"
                                      << "com.sandboxmac.kpi.libkern"
                                      << ""
                                      << "";
    QTest::newRow("third-party plug-in in Extra")
        << "/Extra/Extensions/ExampleSensors.kext/Contents/PlugIns/ExampleCPUTemp.kext"
        << "org.example.driver.CPUTemp"
        << "Contents/MacOS/ExampleCPUTemp"
        << "Mach-O universal binary with 2 architectures\n"
           "%1 (for architecture x86_64):\tMach-O 64-bit kext bundle x86_64\n"
           "%1 (for architecture i386):\tMach-O object i386\n";
}

void TestSandboxTree::kextBundles() {
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
    QCOMPARE(MachODescriber::describe(info->executablePath),
             description.contains(QLatin1String("%1")) ? description.arg(info->executablePath)
                                                       : description);
}

void TestSandboxTree::everyLibraryIsOnTheSameVolume() {
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

void TestSandboxTree::loadedListIsConsistent() {
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

void TestSandboxTree::refusesAFolderInUse() {
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

QTEST_GUILESS_MAIN(TestSandboxTree)
#include "tst_sandboxtree.moc"

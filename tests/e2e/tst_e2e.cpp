#include "AssembledWindow.h"
#include "CliRun.h"
#include "JournalModel.h"
#include "LogWindow.h"
#include "RecordingSheets.h"
#include "RestoreDialog.h"
#include "TestScripts.h"
#include "TestServices.h"
#include "VolumeHealthController.h"
#include "exec/Command.h"
#include "exec/CommandJournal.h"
#include "filesdrop.h"
#include "inspect/MachODescriber.h"
#include "install/KextBackup.h"
#include "maintenance/MkextRebuild.h"
#include "plist/PlistFile.h"
#include "sandbox/KextBundleInfo.h"
#include "sandbox/LoadedKextState.h"
#include "sandbox/SandboxBuilder.h"
#include "sandbox/SandboxCatalog.h"
#include "sandbox/StandInScripts.h"
#include "volumes/DiskInfo.h"
#include "volumes/SystemPaths.h"
#include "volumes/VolumeList.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QStatusBar>
#include <QStringListModel>
#include <QTableView>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>
#include <QTreeWidget>
#include <QUrl>
#include <filesystem>
#include <memory>
#include <unistd.h>

// A fresh sandbox Mac with a home of its own, its stand-in tools run as real processes, and
// the commands a Mac would have run for each task we drive on it. The window and the
// command-line verbs must both produce exactly these lists, so they are written once, here.
class SandboxMac {
public:
    ~SandboxMac() {
        if (m_fixed)
            QDir(m_root).removeRecursively();
    }

    // A file's text; a file that cannot be read gives a text no file here holds.
    static QString readText(const QString &path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll())
                                              : "unreadable " + path;
    }

    // `fixedRoot` empty: a temporary root with a blank, an apostrophe and an umlaut. What an
    // earlier run left at a fixed root is removed first, and the tree goes with the sandbox.
    // The home's settings have `prelink` and leave the rest off.
    bool create(bool prelink = false, const QString &fixedRoot = {}) {
        m_fixed = !fixedRoot.isEmpty();
        m_root = m_fixed ? fixedRoot : m_dir.filePath("Mac's sandbox Ü");
        if (m_fixed)
            QDir(m_root).removeRecursively();
        SandboxBuilder builder(m_root, KK_BINARY);
        if (!builder.create()) {
            qWarning() << builder.error();
            return false;
        }
        clearLog();
        return QDir().mkpath(desktop()) &&
               writePlist(settingsFolder() + "/Info.plist",
                          QByteArray("<key>Prelink Kernel</key>") +
                              (prelink ? "<true/>" : "<false/>") +
                              "<key>Manually recreate Lion cache</key><false/>"
                              "<key>SUCheckAtStartup</key><false/>");
    }

    QString root() const { return m_root; }
    QString path(const QString &relative) const { return m_root + relative; }
    QString volume(const QString &name) const { return m_root + "/Volumes/" + name; }
    QString home() const { return m_dir.filePath("home"); }
    QString desktop() const { return home() + "/Desktop"; }
    QString settingsFolder() const { return home() + "/.config/kextkeeper"; }
    // A path on the started system, "Macintosh HD".
    QString r(const QString &relative = {}) const { return volume("Macintosh HD/") + relative; }

    CliRun run(const QString &systemPath, const QStringList &args) const {
        QProcess process;
        process.start(m_root + systemPath, args);
        process.waitForFinished(30000);
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
                QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }
    std::optional<LoadedKext> loaded(const QString &identifier) const {
        const QList<LoadedKext> kexts = LoadedKextState(m_root).read();
        const LoadedKext *kext = LoadedKextState::find(kexts, identifier);
        return kext ? std::optional(*kext) : std::nullopt;
    }

    // The line a stand-in logs for this run: the command as the program renders it.
    QString tool(const QString &systemPath, const QStringList &args) const {
        return Command{m_root + systemPath, args, true}.toShellLine();
    }
    QStringList logLines() const {
        QFile log(StandInScripts::logPath(m_root));
        if (!log.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(log.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }
    void clearLog() const { QFile::remove(StandInScripts::logPath(m_root)); }

    // The Extra folder's archive rebuilt from `folder`.
    QString rebuild(const QString &folder) const {
        return tool("/usr/sbin/kextcache", {"-v", "1", "-a", "i386", "-a", "x86_64", "-m",
                                            r("Extra/Extensions.mkext"), folder});
    }

    // Maintenance of "Macintosh HD" with all four options.
    QStringList maintenanceCommands(bool prelink) const {
        const QString extensions = r("Extra/Extensions");
        const QString sle = r("System/Library/Extensions");
        QStringList expected{
            tool("/usr/sbin/chown", {"-R", "0:0", extensions}),
            tool("/bin/chmod", {"-R", "755", extensions}),
            tool("/usr/bin/touch", {extensions}),
            rebuild(extensions),
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
        return expected;
    }

    // Two bundles in ~/Downloads: a newer copy of a kext already in Extra/Extensions, and a
    // new one with a hostile name.
    QStringList makeBundlesToInstall() const {
        const QStringList bundles{home() + "/Downloads/ExampleSensors.kext",
                                  home() + "/Downloads/Zed's Ü driver.kext"};
        const QStringList sources{"ExampleSensors", "ExampleDiskShim"};
        for (int i = 0; i < 2; ++i) {
            QDir().mkpath(bundles[i] + "/Contents");
            QFile::copy(r("Extra/Extensions/" + sources[i] + ".kext/Contents/Info.plist"),
                        bundles[i] + "/Contents/Info.plist");
        }
        return bundles;
    }
    QStringList installCommands(const QStringList &bundles) const {
        const QString d = r("Extra/Extensions");
        return {
            tool("/bin/rm", {"-Rf", d + "/ExampleSensors.kext"}),
            tool("/bin/cp", {"-R", bundles[0], d}),
            tool("/bin/cp", {"-R", bundles[1], d}),
            tool("/usr/sbin/chown", {"-R", "0:0", d}),
            tool("/bin/chmod", {"-R", "755", d}),
            tool("/usr/bin/touch", {d}),
            rebuild(d),
        };
    }
    // The replaced bundle went to one dated backup folder first; the new ones are in place.
    bool installedWithBackup() const {
        const QDir backups(desktop() + "/Kext Backups");
        const QStringList runs = backups.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        const QString d = r("Extra/Extensions");
        return runs.size() == 1 &&
               QFileInfo::exists(backups.filePath(runs.first()) +
                                 "/ExampleSensors.kext/Contents/MacOS/ExampleSensors") &&
               !QFileInfo::exists(d + "/ExampleSensors.kext/Contents/MacOS") &&
               QFileInfo::exists(d + "/Zed's Ü driver.kext/Contents/Info.plist");
    }

    // As kextcache leaves it, the archive's access and modification times are one second
    // after the folder's modification time; boot loaders use the archive only then.
    static bool datedAfter(const QString &mkext, const QString &folder) {
        QFile archive(mkext);
        const QDateTime expected = QFileInfo(folder).lastModified().addSecs(1);
        return archive.open(QIODevice::ReadOnly) && archive.size() > 0 &&
               archive.fileTime(QFileDevice::FileModificationTime) == expected &&
               archive.fileTime(QFileDevice::FileAccessTime) == expected;
    }

    // Our own builder, used without kextcache, writes no line in the log.
    QStringList kextStoreCommands(bool kextcache) const {
        const QString store = r("Extra/KextStore");
        QStringList commands{tool("/bin/mv", {r("Extra/Extensions"), store})};
        if (kextcache)
            commands << rebuild(store);
        return commands;
    }
    bool convertedToKextStore() const {
        return QFileInfo::exists(r("Extra/KextStore/ExampleSensors.kext")) &&
               !QFileInfo::exists(r("Extra/Extensions"));
    }

    QStringList testLoadCommands(const QString &kext) const {
        return {tool("/usr/sbin/chown", {"-R", "0:0", kext}), tool("/sbin/kextload", {kext})};
    }

    // The report's jobs run side by side, so their commands are compared in sorted order:
    // both halves of the loaded kexts list ask kextstat, the sections ask for both overviews.
    QStringList reportCommands() const {
        const QString kextstat = tool("/usr/sbin/kextstat", {});
        QStringList commands{
            kextstat, kextstat, software(),
            tool("/usr/sbin/system_profiler", {"SPHardwareDataType", "-detailLevel", "mini"})};
        commands.sort();
        return commands;
    }
    // Asked on its own first by the window, for the computer's name.
    QString software() const { return tool("/usr/sbin/system_profiler", {"SPSoftwareDataType"}); }

private:
    QTemporaryDir m_dir;
    QString m_root;
    bool m_fixed = false;
};

// The real main window, driven like a user would, and the command-line verbs, each on a
// fresh sandbox Mac with real processes all the way down. For the same task both must leave
// exactly the same commands in the log, and every task must end with its message.
// First, on one shared sandbox, the tree `sandbox create` makes, which a newcomer and the
// tasks rely on, and its stand-ins where the tasks do not reach: the tools' error texts,
// library bookkeeping, the volumes diskutil knows, and hostile names in the host tools.
class TestE2e : public QObject {
    Q_OBJECT

    SandboxMac m_sandbox;
    std::unique_ptr<SandboxMac> m_mac;
    std::unique_ptr<SandboxMac> m_cli; // the command line's own sandbox
    RecordingSheets m_sheets;
    std::unique_ptr<TestServices> m_test;
    std::unique_ptr<CommandJournal> m_journal;
    std::unique_ptr<AssembledWindow> m_app;

    template <typename T> T *find(const char *name) const {
        return m_app->window.findChild<T *>(QLatin1String(name));
    }
    // Builds the sandbox and the window on it; the start-up's own diskutil questions are
    // taken out of the log so that it holds only what the task ran.
    void start(bool prelink = false, const QString &fixedRoot = {}, bool dryRun = false) {
        m_mac = std::make_unique<SandboxMac>();
        QVERIFY(m_mac->create(prelink, fixedRoot));
        const SystemPaths paths(m_mac->root(), m_mac->home(), m_mac->settingsFolder());
        // On a sandbox root commands run directly, as `--root` makes them.
        m_sheets.texts.clear();
        m_test = std::make_unique<TestServices>(paths, &m_sheets);
        // A journal of this run only, as the Log window shows it.
        m_journal = std::make_unique<CommandJournal>();
        m_test->services.setJournal(m_journal.get());
        if (dryRun)
            m_test->services.planOnly(*m_journal);
        else
            m_test->session.setJournal(m_journal.get());
        m_app = std::make_unique<AssembledWindow>(m_test->services);
        m_app->window.resize(800, 600);
        m_app->window.show();
        QSignalSpy launched(&m_app->delegate, &TovrelAppDelegate::launched);
        m_app->delegate.applicationDidFinishLaunching();
        QTRY_COMPARE(launched.count(), 1);
        QCOMPARE(find<QComboBox>("DiskSelMain")->currentText(), "Macintosh HD");
        m_mac->clearLog();
    }

    bool startCli(bool prelink = false, const QString &fixedRoot = {}) {
        m_cli = std::make_unique<SandboxMac>();
        return m_cli->create(prelink, fixedRoot);
    }
    CliRun cli(const QStringList &args) const {
        return runKextKeeper(m_cli->root(), m_cli->home(), args);
    }

    // A file dropped on the window, as the file manager delivers it.
    void dropOnWindow(const QString &file) const {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(file)});
        QWidget *target = m_app->window.dropTarget();
        const QPoint at = target->rect().center();
        QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &enter);
        QDropEvent drop(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &drop);
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

    void cleanup() {
        m_app.reset();
        m_test.reset();
        m_mac.reset();
        m_cli.reset();
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
        QCOMPARE(PlistFile::string(lion.get(), "ProductVersion"),
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
        // Sandbox<name>.kext, com.sandboxmac.driver.<name>, and the processor described.
        auto row = [](const char *tag, const QString &name, const QString &executable,
                      const QString &arch) {
            QTest::newRow(tag) << "Sandbox" + name + ".kext"
                               << "com.sandboxmac.driver." + name << executable
                               << "Mach-O object " + arch + "\n";
        };
        row("thin i386 object", "Ethernet", "Contents/MacOS/SandboxEthernet", "i386");
        row("thin ppc object", "LegacyVideo", "Contents/MacOS/SandboxLegacyVideo", "ppc");
        row("old-style bundle", "OldSerial", "SandboxOldSerial", "i386");
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
        // A kext whose library is missing could never be test-loaded in the sandbox, unless
        // it is there for the kext doctor to find; the kernel's own libraries need no kext.
        const auto system = KextBundleInfo::index(m_sandbox.path("/System/Library/Extensions"));
        const auto lion =
            KextBundleInfo::index(m_sandbox.volume("Lion Backup/System/Library/Extensions"));
        QVERIFY2(system.size() >= 30, qPrintable(QString::number(system.size())));
        for (const SandboxKext &kext : SandboxCatalog::kexts()) {
            using Flaw = SandboxKext::Flaw;
            if (kext.flaw == Flaw::BrokenInfoPlist || kext.flaw == Flaw::MissingLibrary)
                continue;
            const auto info = KextBundleInfo::read(m_sandbox.path('/' + kext.path));
            QVERIFY2(info, qPrintable(kext.path));
            const auto &available = kext.path.startsWith("Volumes/") ? lion : system;
            for (const auto &library : info->libraries)
                QVERIFY2(available.contains(library.first) ||
                             library.first.startsWith("com.apple.kernel"),
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
        QCOMPARE(m_sandbox.logLines(), QStringList{m_sandbox.tool(tool, args)});
    }

    void librariesAndReferences() {
        const QString family = "com.sandboxmac.iokit.FireWireFamily";
        const QString bundle = writeKext("Needs FireWire", needs(family.toUtf8()));
        QCOMPARE(m_sandbox.run("/sbin/kextload", {bundle}).err, QString());
        QVERIFY(m_sandbox.loaded(family));
        const int familyIndex = m_sandbox.loaded(family)->index;
        QCOMPARE(m_sandbox.loaded(family)->refs, 1);
        const std::optional<LoadedKext> kext = m_sandbox.loaded("org.test.NeedsFireWire");
        QVERIFY(kext);
        QCOMPARE(kext->links, QList<int>{familyIndex});
        QCOMPARE(kext->index, familyIndex + 1);
        // Unloading gives the reference back.
        QCOMPARE(m_sandbox.run("/sbin/kextunload", {bundle}).status, 0);
        QCOMPARE(m_sandbox.loaded(family)->refs, 0);
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
            expected << m_sandbox.tool(tool, args);
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
        const QString record = m_sandbox.volume("Macintosh HD/.Extra.flags");
        for (const QString flag : {"hidden", "nohidden"}) {
            QCOMPARE(m_sandbox.run("/usr/bin/chflags", {flag, extra}).status, 0);
            QCOMPARE(SandboxMac::readText(record), flag + '\n');
        }
    }

    void maintenanceWithAllFourOptions_data() {
        QTest::addColumn<bool>("prelink");
        QTest::newRow("prelink off") << false;
        QTest::newRow("prelink on") << true;
    }
    void maintenanceWithAllFourOptions() {
        QFETCH(bool, prelink);
        QVERIFY(startCli(prelink));
        const CliRun run = cli({"maintain", "--volume", "Macintosh HD", "--repair-extra",
                                "--rebuild-extra-mkext", "--repair-sle", "--rebuild-caches"});
        QCOMPARE(run.status, 0);
        QVERIFY(run.out.endsWith("Selected tasks were finished.\n"));
        QCOMPARE(m_cli->logLines(), m_cli->maintenanceCommands(prelink));
        QVERIFY(SandboxMac::datedAfter(m_cli->r("Extra/Extensions.mkext"),
                                       m_cli->r("Extra/Extensions")));

        start(prelink);
        // The parents' boxes tick their children: the command list shows all four options ran.
        find<QCheckBox>("cbExtra")->click();
        find<QCheckBox>("cbSLE")->click();
        QSignalSpy finished(&m_app->tasks, &TaskRunner::taskEnded);
        find<QPushButton>("bMainButton")->click();
        QVERIFY(finished.wait(30000));
        QCOMPARE(m_sheets.texts, QStringList{"info: Selected tasks were finished."});
        QCOMPARE(m_mac->logLines(), m_mac->maintenanceCommands(prelink));
        QVERIFY(find<QPushButton>("bMainButton")->isEnabled());
        QVERIFY(QFileInfo(m_mac->r("Extra/Extensions.mkext")).size() > 0);
    }

    // The commands the Log window lists, as the sandbox's log would have them.
    QStringList logged() const {
        LogWindow *log = m_app->window.findChild<LogWindow *>();
        QStringList lines;
        for (int row = 0; log && row < log->model()->rowCount(); ++row)
            lines << log->model()->entry(row).displayLine();
        return lines;
    }

    // Started with --dry-run the window says so, runs nothing as root, and lists in the Log
    // the very commands the real run does.
    void dryRunWindow() {
        start(true, {}, true);
        QCOMPARE(m_app->window.windowTitle(), "KextKeeper (sandbox, dry run)");
        QVERIFY(find<QLabel>("dryRunNote")->isVisible());
        find<QCheckBox>("cbExtra")->click();
        find<QCheckBox>("cbSLE")->click();
        QSignalSpy finished(&m_app->tasks, &TaskRunner::taskEnded);
        find<QPushButton>("bMainButton")->click();
        QVERIFY(finished.wait(30000));
        QCOMPARE(m_sheets.texts, QStringList{"info: Selected tasks were finished."});
        // Only the user's own question about the started system ran.
        const QString question = m_mac->tool("/usr/sbin/diskutil", {"info", m_mac->r()});
        QCOMPARE(m_mac->logLines(), QStringList{question});
        QStringList expected = m_mac->maintenanceCommands(true);
        expected.removeAll(question);
        find<QAction>("MI_ShowLog")->trigger();
        QVERIFY(m_app->window.findChild<LogWindow *>()->isVisible());
        QCOMPARE(logged(), expected);
    }

    // A root command that fails: the status line says so, the alert lists it below the
    // closing text, and the Log marks it.
    void failuresAreToldInTheWindow() {
        start();
        QVERIFY(QFile::remove(m_mac->path("/bin/chmod")));
        writeScript(QDir(m_mac->path("/bin")), "chmod", "echo 'chmod: denied' >&2\nexit 1\n");
        find<QCheckBox>("cbSLERP")->click();
        QSignalSpy finished(&m_app->tasks, &TaskRunner::taskEnded);
        find<QPushButton>("bMainButton")->click();
        QVERIFY(finished.wait(30000));
        const QString chmod =
            m_mac->tool("/bin/chmod", {"-R", "755", m_mac->r("System/Library/Extensions")});
        QCOMPARE(m_sheets.texts, QStringList{"info: Selected tasks were finished.\n\n1 command "
                                             "failed, see the Log:\n" +
                                             chmod + ": exit 1: chmod: denied"});
        QCOMPARE(find<QLabel>("lbMainTask")->text(), "1 command failed, see the Log");
        QCOMPARE(logged().size(), 3); // chown, chmod, diskutil repairpermissions
        const JournalModel *model = m_app->window.findChild<LogWindow *>()->model();
        QCOMPARE(model->failures(), 1);
        QCOMPARE(model->data(model->index(1, JournalModel::ResultColumn)), "failed: exit 1");
    }

    // File > Restore Kexts from Backup…: the backup chosen goes back where it came from,
    // after a question; what it replaces gets a backup of its own.
    void restoreFromTheFileMenu() {
        start();
        const QString installed = m_mac->r("Extra/Extensions/ExampleSensors.kext");
        const QString backup = m_mac->desktop() + "/Kext Backups/01-02 03_04_05";
        QVERIFY(QDir().mkpath(backup));
        QVERIFY(KextBackup::copyTree(installed, backup + "/ExampleSensors.kext"));
        const BackupManifest manifest{QDateTime::currentDateTime(),
                                      "Macintosh HD",
                                      "",
                                      "extra",
                                      {{"ExampleSensors.kext", "Extra/Extensions"}}};
        QVERIFY(manifest.write(backup));
        QVERIFY(QDir(installed + "/Contents/MacOS").removeRecursively());

        find<QAction>("MI_RestoreBackup")->trigger();
        RestoreDialog *dialog = nullptr;
        QTRY_VERIFY((dialog = m_app->window.findChild<RestoreDialog *>()) && dialog->isVisible());
        auto *table = dialog->findChild<QTableWidget *>("backupTable");
        QCOMPARE(table->item(0, 4)->text(), "ExampleSensors.kext");
        table->selectRow(0);
        dialog->findChild<QPushButton *>("restoreButton")->click();
        QMessageBox *question = nullptr;
        QTRY_VERIFY((question = m_app->window.findChild<QMessageBox *>("restoreQuestion")) &&
                    question->isVisible());
        QSignalSpy ended(&m_app->tasks, &TaskRunner::taskEnded);
        question->defaultButton()->click();
        QVERIFY(ended.wait(30000));
        QCOMPARE(m_sheets.texts, QStringList{"info: Selected tasks were finished."});
        QVERIFY(QFileInfo::exists(installed + "/Contents/MacOS/ExampleSensors"));
        QCOMPARE(QDir(m_mac->desktop() + "/Kext Backups")
                     .entryList(QDir::Dirs | QDir::NoDotAndDotDot)
                     .size(),
                 2);
    }

    void installTwoDroppedKextsWithBackup() {
        QVERIFY(startCli());
        const QStringList toInstall = m_cli->makeBundlesToInstall();
        const CliRun run =
            cli(QStringList{"install", "--volume", "Macintosh HD", "--to", "extra", "--backup"} +
                toInstall);
        QVERIFY2(run.status == 0, qPrintable(run.err));
        QCOMPARE(m_cli->logLines(), m_cli->installCommands(toInstall));
        QVERIFY(m_cli->installedWithBackup());
        // The backup goes back where it came from; what it replaces is backed up in turn.
        const QString listed = cli({"restore", "--list"}).out;
        QVERIFY2(listed.contains("  Macintosh HD  Extra/Extensions  ExampleSensors.kext\n"),
                 qPrintable(listed));
        const CliRun restored = cli({"restore", listed.section("  ", 0, 0), "--yes"});
        QVERIFY2(restored.status == 0, qPrintable(restored.err));
        QVERIFY(QFileInfo::exists(
            m_cli->r("Extra/Extensions/ExampleSensors.kext/Contents/MacOS/ExampleSensors")));
        QCOMPARE(cli({"restore", "--list"}).out.count('\n'), 2);
        // A folder without the installation's note is not guessed at.
        QDir().mkpath(m_cli->desktop() + "/Kext Backups/01-01 00_00_00/X.kext");
        const CliRun unknown = cli({"restore", "01-01 00_00_00", "--yes"});
        QCOMPARE(unknown.status, 1);
        QVERIFY(unknown.err.contains("holds no note of where its kexts came from"));

        start();
        const QStringList bundles = m_mac->makeBundlesToInstall();
        find<QAction>("ti_i")->trigger();
        // Dropped on the install list, with a file the list does not take between them.
        auto *table = find<QTableView>("tbkexts");
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(bundles[0]),
                      QUrl::fromLocalFile(m_mac->home() + "/notes.txt"),
                      QUrl::fromLocalFile(bundles[1])});
        QVERIFY(table->model()->dropMimeData(&data, Qt::CopyAction, 0, 0, {}));
        QCOMPARE(table->model()->rowCount(), 2);
        QVERIFY(find<QCheckBox>("cbBackup")->isChecked());

        QSignalSpy ended(&m_app->tasks, &TaskRunner::taskEnded);
        find<QPushButton>("bInstButton")->click();
        QVERIFY(ended.wait(30000));
        QCOMPARE(m_sheets.texts, QStringList{"info: Selected tasks were finished."});
        QCOMPARE(m_mac->logLines(), m_mac->installCommands(bundles));
        QVERIFY(m_mac->installedWithBackup());
    }

    // The desktop's archive is dated after its staging folder, which is kept here (rm does
    // nothing) so that its time can be compared.
    void installToTheDesktop() {
        QVERIFY(startCli());
        QVERIFY(QFile::remove(m_cli->path("/bin/rm")));
        QVERIFY(!writeScript(QDir(m_cli->path("/bin")), "rm", "exit 0\n").isEmpty());
        const CliRun run =
            cli({"install", "--to", "desktop", m_cli->r("Extra/Extensions/ExampleSensors.kext")});
        QVERIFY2(run.status == 0, qPrintable(run.err));
        QVERIFY(SandboxMac::datedAfter(m_cli->desktop() + "/Extensions.mkext",
                                       m_cli->desktop() + "/.mkext_pack"));
    }

    // The dry run follows the state its own commands would leave, so its list is the real
    // run's: each verb runs first with --dry-run (which must change nothing), then for real
    // on the same sandbox. `setup` runs for real before both; "B1", "B2" are the bundles
    // to install, "BACKUP" the backup the setup made. Only the user's own diskutil question
    // is left out of the real run's log.
    void dryRunListsTheRealRunsCommands_data() {
        QTest::addColumn<QStringList>("setup");
        QTest::addColumn<QStringList>("verb");
        const QStringList hd{"--volume", "Macintosh HD"};
        const QStringList none;
        QTest::newRow("maintenance, all four options")
            << none
            << QStringList{"maintain", "--repair-extra", "--rebuild-extra-mkext", "--repair-sle",
                           "--rebuild-caches"} +
                   hd;
        QTest::newRow("the same bundle twice, with backups")
            << none << QStringList{"install", "--to", "extra", "--backup", "B2", "B2", "B1"} + hd;
        QTest::newRow("S/L/E of the started system")
            << none << QStringList{"install", "--to", "sle", "--backup", "B1", "B2"} + hd;
        // Packed kexts need their executables: these are the volume's own.
        QTest::newRow("desktop") << none
                                 << QStringList{"install", "--to", "desktop",
                                                "Extra/Extensions/ExampleSensors.kext",
                                                "Extra/Extensions/ExampleDiskShim.kext"};
        QTest::newRow("into KextStore") << QStringList{"extra", "to-kextstore", "--yes"} + hd
                                        << QStringList{"install", "--to", "extra", "B2", "B1"} + hd;
        QTest::newRow("KextStore back to Extensions")
            << QStringList{"extra", "to-kextstore", "--yes"} + hd
            << QStringList{"extra", "to-extensions", "--yes"} + hd;
        QTest::newRow("hide Extra") << none << QStringList{"extra", "hide", "--yes"} + hd;
        QTest::newRow("restore") << QStringList{"install", "--to", "extra", "--backup", "B1"} + hd
                                 << QStringList{"restore", "BACKUP", "--yes"};
    }
    void dryRunListsTheRealRunsCommands() {
        QFETCH(QStringList, setup);
        QFETCH(QStringList, verb);
        QVERIFY(startCli(true));
        const QStringList bundles = m_cli->makeBundlesToInstall();
        const auto backups = [&] {
            return QDir(m_cli->desktop() + "/Kext Backups")
                .entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        };
        const auto words = [&](QStringList args) {
            args.replaceInStrings(QRegularExpression("^(Extra/.*)"), m_cli->r("\\1"))
                .replaceInStrings(QRegularExpression("^B1$"), bundles[0])
                .replaceInStrings(QRegularExpression("^B2$"), bundles[1])
                .replaceInStrings(QRegularExpression("^BACKUP$"), backups().value(0));
            return args;
        };
        if (!setup.isEmpty())
            QCOMPARE(cli(words(setup)).status, 0);
        m_cli->clearLog();
        const auto rootCommands = [&] {
            QStringList lines = m_cli->logLines();
            lines.removeIf([](const QString &line) {
                return line.contains(QRegularExpression("/diskutil'? info "));
            });
            m_cli->clearLog();
            return lines;
        };
        const QStringList backupsBefore = backups();
        const CliRun dry = cli(QStringList{"--dry-run"} + words(verb));
        QVERIFY2(dry.status == 0, qPrintable(dry.err));
        QStringList planned;
        for (const QString &line : dry.out.split('\n', Qt::SkipEmptyParts))
            if (!line.startsWith("# "))
                planned << line;
        QCOMPARE(rootCommands(), QStringList());
        QCOMPARE(backups(), backupsBefore);

        const CliRun real = cli(words(verb));
        QVERIFY2(real.status == 0, qPrintable(real.err));
        const QStringList ran = rootCommands();
        QVERIFY(!ran.isEmpty());
        QCOMPARE(planned, ran);
    }

    void convertToKextStore_data() {
        QTest::addColumn<bool>("kextcache");
        QTest::newRow("with kextcache") << true;
        QTest::newRow("without kextcache") << false;
    }
    void convertToKextStore() {
        QFETCH(bool, kextcache);
        QVERIFY(startCli());
        if (!kextcache)
            QVERIFY(QFile::remove(m_cli->path("/usr/sbin/kextcache")));
        const CliRun run = cli({"extra", "to-kextstore", "--volume", "Macintosh HD", "--yes"});
        QVERIFY2(run.status == 0, qPrintable(run.err));
        QCOMPARE(m_cli->logLines(), m_cli->kextStoreCommands(kextcache));
        QVERIFY(m_cli->convertedToKextStore());
        QVERIFY(SandboxMac::datedAfter(m_cli->r("Extra/Extensions.mkext"),
                                       m_cli->r("Extra/KextStore")));

        start();
        const QString tool = m_mac->path("/usr/sbin/kextcache");
        if (!kextcache)
            QVERIFY(QFile::remove(tool));
        // The archive must come from this run.
        const QString mkext = m_mac->r("Extra/Extensions.mkext");
        QVERIFY(QFile::remove(mkext));
        setKextkeeperExecutable(QStringLiteral(KK_BINARY));
        find<QAction>("MI_CreateEKS")->trigger();
        QMessageBox *box = nullptr;
        QTRY_VERIFY((box = m_app->window.findChild<QMessageBox *>()) && box->isVisible());
        QCOMPARE(box->text(), "Continue?");
        QCOMPARE(box->defaultButton()->text(), "Yes");
        box->defaultButton()->click();
        QTRY_COMPARE_WITH_TIMEOUT(m_mac->logLines(), m_mac->kextStoreCommands(kextcache), 30000);
        QVERIFY(m_mac->convertedToKextStore());
        QTRY_VERIFY(SandboxMac::datedAfter(mkext, m_mac->r("Extra/KextStore")));
        QVERIFY(m_sheets.texts.isEmpty());
        QCOMPARE(m_app->window.statusBar()->currentMessage(),
                 kextcache
                     ? QString()
                     : tool + QStringLiteral(" is missing: the built-in mkext builder is used "
                                             "instead."));
    }

    // A kext that loads, and one the kernel refuses (i386 only), with kextload's own text
    // (%1: the bundle). The bundle is Extra/Extensions/Example<name>.kext.
    void testLoad_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("error");
        QTest::newRow("loads") << QString("DiskShim") << "";
        QTest::newRow("i386 only")
            << QString("Ethernet")
            << "%1 failed to load - (libkern/kext) not loadable (reason unspecified); check the "
               "system/kernel logs for errors or try kextutil(8).\n";
    }
    void testLoad() {
        QFETCH(QString, name);
        QFETCH(QString, error);
        const QString bundle = "Extra/Extensions/Example" + name + ".kext";
        const QString identifier = "org.example.driver." + name;
        QVERIFY(startCli());
        const QString k = m_cli->r(bundle);
        const CliRun run = cli({"load", k});
        QCOMPARE(run.status, error.isEmpty() ? 0 : 1);
        QVERIFY2(run.err.contains(QString(error).replace("%1", k).trimmed()), qPrintable(run.err));
        QCOMPARE(m_cli->logLines(), m_cli->testLoadCommands(k));
        QCOMPARE(m_cli->loaded(identifier).has_value(), error.isEmpty());

        start();
        const QString kext = m_mac->r(bundle);
        find<QAction>("ti_c")->trigger();
        dropOnWindow(kext);
        QCOMPARE(find<QLineEdit>("kPath")->text(), kext);
        find<QPushButton>("bKextLoad")->click();
        QCOMPARE(m_mac->logLines(), m_mac->testLoadCommands(kext));
        QCOMPARE(m_sheets.texts,
                 error.isEmpty() ? QStringList{} : QStringList{"error: " + error.arg(kext)});
        QCOMPARE(m_mac->loaded(identifier).has_value(), error.isEmpty());
        QCOMPARE(m_app->window.statusText(),
                 error.isEmpty() ? "Loaded " + identifier + "." : QString());
    }

    void unloadByCommandLine_data() {
        QTest::addColumn<QString>("bundle");
        QTest::addColumn<QString>("error"); // empty: unloads
        QTest::newRow("unloads") << "/Extra/Extensions/ExampleAudioPatch.kext" << QString();
        QTest::newRow("its plug-in keeps it")
            << "/System/Library/Extensions/SandboxACPIFamily.kext"
            << "Failed to unload com.sandboxmac.iokit.ACPIFamily - (libkern/kext) kext is in use "
               "or retained (cannot unload).";
    }
    void unloadByCommandLine() {
        QFETCH(QString, bundle);
        QFETCH(QString, error);
        QVERIFY(startCli());
        const QString kext = m_cli->path(bundle);
        const CliRun run = cli({"unload", kext});
        QCOMPARE(run.status, error.isEmpty() ? 0 : 1);
        QVERIFY2(run.err.contains(error), qPrintable(run.err));
        QCOMPARE(m_cli->logLines(), QStringList{m_cli->tool("/sbin/kextunload", {kext})});
        QCOMPARE(cli({"loaded"}).out.contains("org.example.driver.AudioPatch (1.2)"),
                 !bundle.contains("AudioPatch"));
    }

    void unloadFromTheLoadedPage() {
        start();
        find<QAction>("ti_l")->trigger();
        auto *table = find<QTableView>("tbLoaded");
        const QStringList before = qobject_cast<QStringListModel *>(table->model())->stringList();
        const qsizetype row = before.indexOf("org.example.driver.AudioPatch (1.2)");
        QVERIFY2(row >= 0, qPrintable(before.join('\n')));
        // The details pane opens, the kext is found in the index, and it is unloaded.
        find<QToolButton>("buttonslide")->click();
        table->selectRow(int(row));
        // The index has the started system's own path, not the one through /Volumes.
        const QString kext = m_mac->path("/Extra/Extensions/ExampleAudioPatch.kext");
        QCOMPARE(find<QLineEdit>("tfKPath")->text(), kext);
        find<QPushButton>("bUnload")->click();

        const QString kextstat = m_mac->tool("/usr/sbin/kextstat", {});
        QCOMPARE(m_mac->logLines(),
                 (QStringList{kextstat, m_mac->tool("/sbin/kextunload", {kext}), kextstat}));
        QVERIFY(m_sheets.texts.isEmpty());
        const QStringList after = qobject_cast<QStringListModel *>(table->model())->stringList();
        QCOMPARE(after.size(), before.size() - 1);
        QVERIFY(!after.contains(before.at(row)));
        QCOMPARE(find<QLabel>("lbLdedFnd")->text(), QString("Found: %1").arg(after.size()));
        QVERIFY(find<QLineEdit>("tfKPath")->text().isEmpty());
    }

    void unpack() {
        start();
        const QString mkext = m_mac->r("Extra/Extensions.mkext");
        const QString folder = m_mac->desktop() + "/Mkext Contents";
        QVERIFY(QDir().mkpath(folder));
        find<QAction>("ti_u")->trigger();
        dropOnWindow(mkext);
        QVERIFY(find<QPlainTextEdit>("tvMkext")->toPlainText().startsWith(
            QLatin1String("Found 4 kexts:")));
        find<QComboBox>("MkArch")->setCurrentText("i386");
        QCOMPARE(find<QLineEdit>("MKUnPath")->text(), folder);
        find<QPushButton>("bUnpck")->click();

        const QString tool = "/usr/sbin/mkextunpack";
        QCOMPARE(m_mac->logLines(),
                 (QStringList{m_mac->tool(tool, {"-v", mkext}),
                              m_mac->tool(tool, {"-a", "i386", "-d", folder, mkext})}));
        // Plug-ins come out beside their containers, as with Apple's tool.
        QCOMPARE(
            QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot),
            (QStringList{"ExampleAudioPatch.kext", "ExampleCPUTemp.kext", "ExampleDiskShim.kext",
                         "ExampleEthernet.kext", "ExampleSensors.kext"}));
        QCOMPARE(m_sheets.texts, QStringList{"info: Mkext was unpacked to selected directory."});
    }

    // The Extra menu's Volume Health window lists a finding of every check; a fix button
    // asks, then starts its task (the maintenance page with the box ticked, a move into the
    // backups), and the task's end checks the volume again.
    void volumeHealthWindow() {
        start();
        auto *health = m_app->delegate.findChild<VolumeHealthController *>();
        QSignalSpy checked(health, &VolumeHealthController::checked);
        find<QAction>("MI_VolumeHealth")->trigger();
        QVERIFY(checked.wait(30000));
        const auto ids = [health] {
            QStringList found;
            for (const DoctorFinding &finding : health->result().findings)
                found << finding.id;
            found.removeDuplicates();
            std::sort(found.begin(), found.end(), [](const QString &a, const QString &b) {
                return a.mid(1).toInt() < b.mid(1).toInt();
            });
            return found.join(' ');
        };
        QCOMPARE(ids(), "D1 D2 D3 D4 D5 D6 D7 D8 D9 D10 D11 D12");
        auto *tree = health->healthWindow()->findChild<QTreeWidget *>("tvHealth");
        int rows = 0;
        for (int i = 0; i < tree->topLevelItemCount(); ++i)
            rows += tree->topLevelItem(i)->childCount();
        QCOMPARE(rows, health->result().findings.size());
        auto fix = [&](const char *button) {
            auto *push = health->healthWindow()->findChild<QPushButton *>(button);
            QVERIFY2(push, button);
            push->click();
            QVERIFY(health->openQuestion());
            for (QAbstractButton *answer : health->openQuestion()->buttons())
                if (answer->text() == "Yes")
                    answer->click();
            QVERIFY(checked.wait(30000));
        };

        fix("D1-maintain");
        QCOMPARE(m_app->window.currentPage(), int(PageMaintenance));
        QVERIFY(find<QCheckBox>("cbSLERP")->isChecked() && !find<QCheckBox>("cbERP")->isChecked());
        const QString sle = m_mac->r("System/Library/Extensions");
        QCOMPARE(m_mac->logLines(), (QStringList{m_mac->tool("/usr/sbin/chown", {"-R", "0:0", sle}),
                                                 m_mac->tool("/bin/chmod", {"-R", "755", sle}),
                                                 m_mac->tool("/usr/sbin/diskutil",
                                                             {"repairpermissions", m_mac->r()})}));
        QVERIFY(!ids().contains("D1 "));

        m_mac->clearLog();
        fix("D9-remove");
        const QString copy = m_mac->r("Extra/Extensions/SandboxAHCIPort.kext");
        QCOMPARE(m_mac->logLines(), QStringList{m_mac->tool("/bin/rm", {"-Rf", copy})});
        QVERIFY(!QFileInfo::exists(copy));
        QCOMPARE(QDir(m_mac->desktop() + "/Kext Backups")
                     .entryList(QDir::Dirs | QDir::NoDotAndDotDot)
                     .size(),
                 1);
        QVERIFY(!ids().contains("D9"));
        QCOMPARE(m_sheets.texts,
                 (QStringList{"info: Selected tasks were finished.",
                              "info: SandboxAHCIPort.kext was moved to Kext Backups."}));

        // A broken kext's Install... readies the installation page for a good copy.
        QList<FilePanels::Kind> asked;
        m_app->panels.setAnswer([&asked](FilePanels::Kind kind, const QString &, auto done) {
            asked << kind;
            done(0, {});
        });
        health->healthWindow()->findChild<QPushButton *>("D4-install")->click();
        QCOMPARE(m_app->window.currentPage(), int(PageInstallation));
        QVERIFY(find<QRadioButton>("inSLE")->isChecked());
        QCOMPARE(asked, QList{FilePanels::Kind::Bundles});
    }

    void savedReport() {
        // The report lays out its path column by the longest path, so the sandbox that it is
        // compared on lies at a root as long as the one the expected report was made on, but
        // of this run's own, as other runs of these tests may be under way.
        const QTemporaryDir folder("/tmp/kk-eXXXXXX");
        const QString root = folder.filePath("Mac's sandbox");
        const QString expected = SandboxMac::readText(KK_FIXTURES "/report/sandbox-report.txt")
                                     .replace("/tmp/kk-e2e-win", folder.path());
        QVERIFY(startCli(false, root));
        // A dry run writes nothing.
        const CliRun dry = cli({"--dry-run", "report", m_cli->desktop() + "/Sandbox Mac.txt"});
        QCOMPARE(dry.out,
                 "# would write the system report to " + m_cli->desktop() + "/Sandbox Mac.txt\n");
        QVERIFY(!QFileInfo::exists(m_cli->desktop() + "/Sandbox Mac.txt"));
        const CliRun run = cli({"report", m_cli->desktop() + "/Sandbox Mac.txt"});
        QVERIFY2(run.status == 0, qPrintable(run.err));
        QCOMPARE(run.out, "Saved.\n");
        QCOMPARE(SandboxMac::readText(m_cli->desktop() + "/Sandbox Mac.txt"), expected);
        QStringList log = m_cli->logLines();
        log.sort();
        QCOMPARE(log, m_cli->reportCommands());

        start(false, root);
        QString offered;
        const QString file = m_mac->desktop() + "/report.txt";
        m_app->panels.setAnswer([&offered, file](FilePanels::Kind, const QString &name, auto done) {
            offered = name;
            done(1, {file});
        });
        QSignalSpy ended(&m_app->tasks, &TaskRunner::taskEnded);
        find<QAction>("MI_CreateList")->trigger();
        QVERIFY(ended.wait(30000));
        QCOMPARE(offered, "Sandbox Mac");
        QCOMPARE(m_sheets.texts, QStringList{"info: Saved."});
        QCOMPARE(m_app->window.statusText(), "Report saved to " + file + ".");
        QCOMPARE(SandboxMac::readText(file), expected);
        log = m_mac->logLines();
        QVERIFY(!log.isEmpty());
        QCOMPARE(log.takeFirst(), m_mac->software());
        log.sort();
        QCOMPARE(log, m_mac->reportCommands());
    }
};

QTEST_MAIN(TestE2e)
#include "tst_e2e.moc"

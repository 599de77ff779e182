#include "CliRun.h"
#include "doctor/KextDoctor.h"
#include "doctor/KextVersion.h"
#include "inspect/MachOWriter.h"
#include "mkext/MkextBuiltinTool.h"
#include "sandbox/SandboxBuilder.h"
#include "sandbox/SandboxOwners.h"

#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// One kext as a test writes it; "fat", "i386", "x86_64", "ppc", "text" (not Mach-O) or
// "none" (codeless) for its executable.
struct KextMade {
    KextMade(QString id, QString version, QString compat = {}, QString arch = "fat",
             QByteArray libs = {}, bool required = true)
        : id(std::move(id)), version(std::move(version)), compat(std::move(compat)),
          arch(std::move(arch)), libs(std::move(libs)), required(required) {}
    QString id;
    QString version;
    QString compat;
    QString arch;
    QByteArray libs; // <key>id</key><string>version</string>...
    bool required;
};

QByteArray executable(const QString &arch) {
    using W = MachOWriter;
    if (arch == "fat")
        return W::fat({W::kextSlice(W::X86_64), W::kextSlice(W::I386)});
    if (arch == "text")
        return "#!/bin/sh\n";
    const auto cpu = MachOSlices::cpuType(arch);
    return W::thin(W::kextSlice(*cpu));
}

time_t mtime(const QString &path) {
    struct stat st;
    return ::stat(QFile::encodeName(path).constData(), &st) == 0 ? st.st_mtime : 0;
}

void setTime(const QString &path, time_t when) {
    const struct timespec times[2] = {{0, UTIME_OMIT}, {when, 0}};
    QVERIFY(::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0) == 0);
}

// A volume of a 10.6.8 system with a family and a driver in S/L/E and one kext in Extra,
// its Extra mkext and startup cache dated as the tools date them: nothing to find. A fault
// spoils it before the archives are built, unless it keeps them as they are.
class Tree {
public:
    QTemporaryDir dir;
    QString root = dir.filePath("Volumes/Mac");
    bool keepArchive = false; // the fault has made (or removed) the Extra mkext itself
    bool keepCache = false;

    QString path(const QString &relative) const { return root + '/' + relative; }

    void writeKext(const QString &relative, const KextMade &made) const {
        const QString bundle = path(relative);
        const QString name = QFileInfo(bundle).completeBaseName();
        QByteArray keys = "<key>CFBundleIdentifier</key><string>" + made.id.toUtf8() +
                          "</string><key>CFBundleVersion</key><string>" + made.version.toUtf8() +
                          "</string><key>CFBundlePackageType</key><string>KEXT</string>";
        if (!made.compat.isEmpty())
            keys +=
                "<key>OSBundleCompatibleVersion</key><string>" + made.compat.toUtf8() + "</string>";
        if (made.required)
            keys += "<key>OSBundleRequired</key><string>Root</string>";
        if (!made.libs.isEmpty())
            keys += "<key>OSBundleLibraries</key><dict>" + made.libs + "</dict>";
        if (made.arch != "none") {
            keys += "<key>CFBundleExecutable</key><string>" + name.toUtf8() + "</string>";
            QVERIFY(MachOWriter::write(bundle + "/Contents/MacOS/" + name, executable(made.arch)));
        }
        QVERIFY(writePlist(bundle + "/Contents/Info.plist", keys));
    }

    void writeVersion(const QString &version) const {
        QVERIFY(writePlist(path("System/Library/CoreServices/SystemVersion.plist"),
                           "<key>ProductVersion</key><string>" + version.toUtf8() + "</string>"));
    }

    void makeHealthy() const {
        writeVersion("10.6.8");
        writeKext("System/Library/Extensions/Family.kext", {"com.t.Family", "1.5", "1.0"});
        writeKext("System/Library/Extensions/Driver.kext",
                  {"com.t.Driver",
                   "2.0",
                   {},
                   "fat",
                   "<key>com.t.Family</key><string>1.0</string>"
                   "<key>com.apple.kpi.iokit</key><string>9.0</string>"});
        writeKext("Extra/Extensions/Extra.kext",
                  {"com.t.Extra", "1.0", {}, "fat", "<key>com.t.Family</key><string>1.2</string>"});
        QDirIterator it(root, QDirIterator::Subdirectories);
        while (it.hasNext())
            ::chmod(QFile::encodeName(it.next()).constData(), it.fileInfo().isDir() ? 0755 : 0644);
    }

    void buildArchive() const {
        QCOMPARE(
            MkextBuiltinTool::build(path("Extra/Extensions.mkext"), path("Extra/Extensions"), {})
                .status,
            0);
    }

    void finish() const {
        if (!keepArchive)
            buildArchive();
        if (keepCache)
            return;
        const QString cache = path("System/Library/Caches/com.apple.kext.caches/Startup/"
                                   "Extensions.mkext");
        QVERIFY(MachOWriter::write(cache, "mkext"));
        setTime(cache,
                std::max(mtime(path("System/Library/Extensions")), mtime(path("mach_kernel"))) + 1);
    }

    void owner(const QString &relative, uint uid, uint gid) const {
        SandboxOwners owners(dir.path());
        QVERIFY(owners.set(path(relative), {uid, gid}, false));
        QVERIFY(owners.save());
    }

    // The findings as "severity ID path", paths from the volume root.
    QStringList findings(const QString &extraVersion = {}) const {
        const auto owners = std::make_shared<SandboxOwners>(dir.path());
        KextDoctor::Options options{root, extraVersion,
                                    [owners](const QString &file, BundleWalk::Owner) {
                                        const auto owner = owners->owner(file);
                                        return BundleWalk::Owner{owner.first, owner.second};
                                    }};
        QStringList lines;
        for (const DoctorFinding &finding : KextDoctor::run(options).findings)
            lines << DoctorFinding::severityName(finding.severity) + ' ' + finding.id + ' ' +
                         finding.path.mid(root.size() + 1);
        return lines;
    }
};

using Fault = std::function<void(Tree &)>;

const QString sle = QStringLiteral("System/Library/Extensions/");
const QString driver = sle + "Driver.kext";
const QString family = sle + "Family.kext";

Fault kextAt(const QString &relative, const KextMade &s) {
    return [relative, s](Tree &t) { t.writeKext(relative, s); };
}
Fault driverNeeds(const QByteArray &libs, const QString &arch = "fat") {
    return kextAt(driver, {"com.t.Driver", "2.0", {}, arch, libs});
}
Fault onVersion(const QString &version, const Fault &fault) {
    return [version, fault](Tree &t) {
        t.writeVersion(version);
        fault(t);
    };
}

} // namespace

Q_DECLARE_METATYPE(Fault)

// Every check on real folder trees: a healthy volume shows nothing, and each fault shows
// exactly its findings; then the verb on a fresh sandbox Mac, where every check finds
// something, with its JSON document and its fixes.
class TestDoctor : public QObject {
    Q_OBJECT

private slots:
    void versionsOrderAsTheKernelReadsThem_data() {
        QTest::addColumn<QString>("older");
        QTest::addColumn<QString>("newer");
        QTest::newRow("revision") << "1.2.9"
                                  << "1.2.10";
        QTest::newRow("release after its development") << "1.2.0d1"
                                                       << "1.2";
        QTest::newRow("stages") << "1.0d9"
                                << "1.0a1";
        QTest::newRow("beta below candidate") << "1.0b200"
                                              << "1.0fc1";
        QTest::newRow("candidate below release") << "1.0fc3"
                                                 << "1.0";
        QTest::newRow("major") << "9.99.99"
                               << "10";
    }
    void versionsOrderAsTheKernelReadsThem() {
        QFETCH(QString, older);
        QFETCH(QString, newer);
        QVERIFY(KextVersion::parse(older) < KextVersion::parse(newer));
        QVERIFY(KextVersion::parse(older).has_value());
        QCOMPARE(KextVersion::parse("1.2"), KextVersion::parse("1.2.0"));
        for (const char *bad : {"", "1.", "1.100", "12345", "1.0x1", "1.0b256", "v1", "1.0 "})
            QVERIFY2(!KextVersion::parse(bad), bad);
    }

    void findsExactlyTheFault_data() {
        QTest::addColumn<Fault>("fault");
        QTest::addColumn<QStringList>("expected");
        QTest::addColumn<QString>("extraVersion");
        using L = QStringList;
        const QString none;
        QTest::newRow("healthy") << Fault([](Tree &) {}) << L{} << none;
        QTest::newRow("D1 owner") << Fault([](Tree &t) {
            t.owner(driver + "/Contents/MacOS/Driver", 501, 20);
        }) << L{"error D1 " + driver}
                                  << none;
        QTest::newRow("D1 group only, in Extra")
            << Fault([](Tree &t) { t.owner("Extra/Extensions/Extra.kext", 0, 20); })
            << L{"error D1 Extra/Extensions/Extra.kext"} << none;
        QTest::newRow("D2 mode") << Fault([](Tree &t) {
            ::chmod(QFile::encodeName(t.path(driver + "/Contents/Info.plist")).constData(), 0664);
        }) << L{"error D2 " + driver}
                                 << none;
        QTest::newRow("D3 link") << Fault([](Tree &t) {
            QVERIFY(QDir().mkpath(t.path(driver + "/Contents/Resources")));
            QVERIFY(QFile::link("../Info.plist", t.path(driver + "/Contents/Resources/I")));
        }) << L{"warning D3 " + driver}
                                 << none;
        QTest::newRow("D4 missing") << Fault([](Tree &t) {
            QVERIFY(QFile::remove(t.path(driver + "/Contents/Info.plist")));
        }) << L{"error D4 " + driver}
                                    << none;
        QTest::newRow("D4 unreadable") << Fault([](Tree &t) {
            QVERIFY(MachOWriter::write(t.path(driver + "/Contents/Info.plist"), "<plist><dict>"));
        }) << L{"error D4 " + driver} << none;
        QTest::newRow("D5 identifier")
            << kextAt(driver, {"", "2.0"}) << L{"error D5 " + driver} << none;
        QTest::newRow("D5 version")
            << kextAt(driver, {"com.t.Driver", "2.0.0.1"}) << L{"error D5 " + driver} << none;
        QTest::newRow("D5 compatible newer")
            << kextAt(family, {"com.t.Family", "1.5", "1.6"})
            << L{"error D7 " + driver, "error D5 " + family, "error D7 Extra/Extensions/Extra.kext"}
            << none;
        QTest::newRow("D5 package, executable") << Fault([](Tree &t) {
            QVERIFY(QFile::remove(t.path(driver + "/Contents/MacOS/Driver")));
            QVERIFY(writePlist(t.path(sle + "App.kext/Contents/Info.plist"),
                               "<key>CFBundleIdentifier</key><string>com.t.App</string>"
                               "<key>CFBundleVersion</key><string>1</string>"
                               "<key>CFBundlePackageType</key><string>APPL</string>"));
        }) << L{"error D5 " + sle + "App.kext", "error D5 " + driver}
                                                << none;
        // Plug-ins are kexts of their own, in Contents/PlugIns or, in a bundle without
        // Contents, in PlugIns.
        QTest::newRow("D5 in plug-ins") << Fault([](Tree &t) {
            t.writeKext(family + "/Contents/PlugIns/Sub.kext", {"", "1"});
            QVERIFY(writePlist(t.path(sle + "Flat.kext/Info.plist"),
                               "<key>CFBundleIdentifier</key><string>com.t.Flat</string>"
                               "<key>CFBundleVersion</key><string>1</string>"
                               "<key>CFBundlePackageType</key><string>KEXT</string>"));
            t.writeKext(sle + "Flat.kext/PlugIns/Deep.kext", {"", "1"});
        })
                                        << L{"error D5 " + family + "/Contents/PlugIns/Sub.kext",
                                             "error D5 " + sle + "Flat.kext/PlugIns/Deep.kext"}
                                        << none;
        QTest::newRow("D6 one of two")
            << driverNeeds({}, "i386") << L{"warning D6 " + driver} << none;
        QTest::newRow("D6 none of two")
            << driverNeeds({}, "ppc") << L{"error D6 " + driver} << none;
        QTest::newRow("D6 not Mach-O")
            << driverNeeds({}, "text") << L{"error D6 " + driver} << none;
        QTest::newRow("D6 10.5 wants i386")
            << onVersion("10.5.8", driverNeeds({}, "x86_64")) << L{"error D6 " + driver} << none;
        QTest::newRow("D6 10.8 wants x86_64")
            << onVersion("10.8", driverNeeds({}, "i386")) << L{"error D6 " + driver} << none;
        QTest::newRow("D6 version folder tells") << Fault([](Tree &t) {
            QVERIFY(QFile::remove(t.path("System/Library/CoreServices/SystemVersion.plist")));
            t.writeKext("Extra/10.5/Extensions/Old.kext", {"com.t.Old", "1", {}, "x86_64"});
        }) << L{"error D6 Extra/10.5/Extensions/Old.kext"}
                                                 << "10.5";
        QTest::newRow("D7 not found") << driverNeeds("<key>com.t.Gone</key><string>1</string>")
                                      << L{"error D7 " + driver} << none;
        QTest::newRow("D7 too new") << driverNeeds("<key>com.t.Family</key><string>1.6</string>")
                                    << L{"error D7 " + driver} << none;
        QTest::newRow("D7 too old") << driverNeeds("<key>com.t.Family</key><string>0.9</string>")
                                    << L{"error D7 " + driver} << none;
        QTest::newRow("D7 no compatible version")
            << kextAt(family, {"com.t.Family", "1.5"})
            << L{"error D7 " + driver, "error D7 Extra/Extensions/Extra.kext"} << none;
        QTest::newRow("D7 interface newer than the kernel")
            << driverNeeds("<key>com.apple.kpi.bsd</key><string>10.9</string>")
            << L{"error D7 " + driver} << none;
        QTest::newRow("D8 Extra kext")
            << kextAt("Extra/Extensions/Extra.kext", {"com.t.Extra", "1.0", {}, "fat", {}, false})
            << L{"warning D8 Extra/Extensions/Extra.kext"} << none;
        QTest::newRow("D8 its S/L/E library")
            << kextAt(family, {"com.t.Family", "1.5", "1.0", "fat", {}, false})
            << L{"warning D8 " + family} << none;
        QTest::newRow("D9 Extra copy not newer")
            << kextAt("Extra/Extensions/Family.kext", {"com.t.Family", "1.5", "1.0"})
            << L{"error D9 Extra/Extensions/Family.kext"} << none;
        QTest::newRow("D9 Extra copy newer")
            << kextAt("Extra/Extensions/Family.kext", {"com.t.Family", "1.6", "1.0"})
            << L{"warning D9 " + family} << none;
        QTest::newRow("D9 two in one folder")
            << kextAt(sle + "Family2.kext", {"com.t.Family", "1.4"})
            << L{"error D9 " + sle + "Family2.kext"} << none;
        QTest::newRow("D10 not used") << Fault([](Tree &t) {
            t.keepArchive = true;
            t.buildArchive();
            setTime(t.path("Extra/Extensions.mkext"), mtime(t.path("Extra/Extensions")) + 2);
        }) << L{"warning D10 Extra/Extensions.mkext"}
                                      << none;
        QTest::newRow("D10 used but different") << Fault([](Tree &t) {
            t.keepArchive = true;
            t.buildArchive();
            t.writeKext("Extra/Extensions/Late.kext", {"com.t.Late", "1"});
            setTime(t.path("Extra/Extensions.mkext"), mtime(t.path("Extra/Extensions")) + 1);
        }) << L{"error D10 Extra/Extensions.mkext"}
                                                << none;
        QTest::newRow("D10 KextStore without archive") << Fault([](Tree &t) {
            t.keepArchive = true;
            QVERIFY(QDir().rename(t.path("Extra/Extensions"), t.path("Extra/KextStore")));
        }) << L{"warning D10 Extra/Extensions.mkext"} << none;
        QTest::newRow("D11 cache older") << Fault([](Tree &t) {
            t.keepCache = true;
            const QString cache = t.path("System/Library/Extensions.mkext");
            QVERIFY(MachOWriter::write(cache, "mkext"));
            setTime(cache, mtime(t.path("System/Library/Extensions")) - 60);
        }) << L{"warning D11 System/Library/Extensions.mkext"}
                                         << none;
        QTest::newRow("D11 kernel newer") << Fault([](Tree &t) {
            t.finish();
            t.keepCache = true;
            QVERIFY(MachOWriter::write(t.path("mach_kernel"), "kernel"));
            setTime(t.path("mach_kernel"), mtime(t.path("System/Library/Extensions")) + 60);
        }) << L{"warning D11 System/Library/Caches/com.apple.kext.caches/Startup/Extensions.mkext"}
                                          << none;
        QTest::newRow("D12 old kernel library, 64-bit")
            << driverNeeds("<key>com.apple.kernel.iokit</key><string>7.0</string>")
            << L{"error D12 " + driver} << none;
        QTest::newRow("D12 old kernel library, 32-bit")
            << driverNeeds("<key>com.apple.kernel.iokit</key><string>7.0</string>", "i386")
            << L{"warning D6 " + driver} << none;
    }
    void findsExactlyTheFault() {
        QFETCH(Fault, fault);
        QFETCH(QStringList, expected);
        QFETCH(QString, extraVersion);
        Tree tree;
        tree.makeHealthy();
        fault(tree);
        tree.finish();
        QCOMPARE(tree.findings(extraVersion), expected);
    }

    // The sandbox Mac has a kext for every check; the command line names each one, says
    // which task fixes it and fails, and --json says the same in one document.
    void sandboxShowsEveryCheck() {
        QTemporaryDir dir;
        const QString root = dir.filePath("mac");
        QVERIFY(SandboxBuilder(root, KK_BINARY).create());
        const QStringList doctor{"doctor", "--volume", "Macintosh HD"};
        const CliRun run = runKextKeeper(root, dir.filePath("home"), doctor);
        QCOMPARE(run.status, 1);
        QStringList lines = run.out.split('\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.takeLast(),
                 "9 errors and 11 warnings in 49 kexts on Macintosh HD (10.6.8).");
        const QRegularExpression finding("^(error|warning) (D\\d+) (.*?): .*; fix: (.*)$");
        QStringList found;
        for (const QString &line : std::as_const(lines)) {
            const QRegularExpressionMatch m = finding.match(line);
            QVERIFY2(m.hasMatch(), qPrintable(line));
            if (m.captured(2) != "D6") // the i386-only drivers are listed below
                found << m.captured(1) + ' ' + m.captured(2) + ' ' +
                             m.captured(3).section('/', -1) + " -> " + m.captured(4);
        }
        const QString permissions = " permissions (maintenance)";
        const QString reinstall = "reinstall a good copy of the kext, or remove it";
        const QString plist = "add OSBundleRequired (Root) to its Info.plist";
        QCOMPARE(
            found,
            (QStringList{
                "warning D3 SandboxATAPI.kext -> " + reinstall,
                "error D1 SandboxCardBus.kext -> repair S/L/E" + permissions,
                "error D4 SandboxIrDA.kext -> " + reinstall,
                "error D12 SandboxLegacyAudio.kext -> " + reinstall,
                "warning D8 SandboxSDFamily.kext -> " + plist,
                "error D5 SandboxSmartCard.kext -> " + reinstall,
                "error D7 SandboxWebcam.kext -> " + reinstall,
                "error D7 SandboxWebcam.kext -> " + reinstall,
                "warning D8 ExampleCardReader.kext -> " + plist,
                "error D2 ExampleDiskShim.kext -> repair Extra" + permissions,
                "error D9 SandboxAHCIPort.kext -> remove this copy (it goes to Kext Backups, where "
                "restore finds it)",
                "warning D10 Extensions.mkext -> rebuild the Extra mkext (maintenance)",
                "warning D11 Extensions.mkext -> rebuild the system caches (maintenance)"}));
        QCOMPARE(lines.filter(" D6 ").size(), 7);

        const CliRun json =
            runKextKeeper(root, dir.filePath("home"), doctor + QStringList{"--json"});
        QCOMPARE(json.status, 1);
        const QJsonObject document = QJsonDocument::fromJson(json.out.toUtf8()).object();
        QCOMPARE(document["errors"].toInt(), 9);
        QCOMPARE(document["warnings"].toInt(), 11);
        const QJsonArray findings = document["findings"].toArray();
        QCOMPARE(findings.size(), lines.size());
        const auto owner = std::find_if(findings.begin(), findings.end(),
                                        [](const auto &f) { return f.toObject()["id"] == "D1"; });
        QVERIFY(owner != findings.end());
        QCOMPARE(owner->toObject()["fix"].toString(), "repair-sle");
        QCOMPARE(owner->toObject()["path"].toString(),
                 root + "/Volumes/Macintosh HD/System/Library/Extensions/SandboxCardBus.kext");
    }

    // --fix asks, then runs the maintenance tasks the findings name; the duplicate goes to
    // the backups only with --yes, and what the tasks repair is gone afterwards.
    void fixRunsTheNamedTasks() {
        QTemporaryDir dir;
        const QString root = dir.filePath("mac");
        const QString home = dir.filePath("home");
        QVERIFY(SandboxBuilder(root, KK_BINARY).create());
        const QString log = root + "/var/log/commands.log";
        const QString copy = root + "/Extra/Extensions/SandboxAHCIPort.kext";
        const QStringList fix{"doctor", "--volume", "Macintosh HD", "--fix"};

        CliRun run = runKextKeeper(root, home, fix, "n\n");
        QVERIFY(run.out.contains("Not removed without --yes: " + root +
                                 "/Volumes/Macintosh HD/Extra/Extensions/SandboxAHCIPort.kext\n"));
        QVERIFY(run.out.contains("Maintenance of Macintosh HD: repair Extra permissions, rebuild "
                                 "the Extra mkext, repair S/L/E permissions, rebuild the system "
                                 "caches\nContinue on the volume \"Macintosh HD\"? [y/N] "));
        QVERIFY(!QFileInfo::exists(log) || QFileInfo(log).size() == 0);
        QVERIFY(QFileInfo::exists(copy));

        run = runKextKeeper(root, home, fix + QStringList{"--yes"});
        const QString r = root + "/Volumes/Macintosh HD";
        QFile file(log);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(
            QString::fromUtf8(file.readAll()).remove('\'').replace(r, "R").replace(root, "ROOT"),
            "ROOT/bin/rm -Rf R/Extra/Extensions/SandboxAHCIPort.kext\n"
            "ROOT/usr/sbin/chown -R 0:0 R/Extra/Extensions\n"
            "ROOT/bin/chmod -R 755 R/Extra/Extensions\n"
            "ROOT/usr/bin/touch R/Extra/Extensions\n"
            "ROOT/usr/sbin/kextcache -v 1 -a i386 -a x86_64 -m R/Extra/Extensions.mkext "
            "R/Extra/Extensions\n"
            "ROOT/usr/sbin/chown -R 0:0 R/System/Library/Extensions\n"
            "ROOT/bin/chmod -R 755 R/System/Library/Extensions\n"
            "ROOT/usr/sbin/diskutil repairpermissions R/\n"
            "ROOT/usr/bin/touch R/System/Library/Extensions\n"
            "ROOT/usr/sbin/diskutil info R/\n");
        QVERIFY(!QFileInfo::exists(copy));
        const QStringList backups =
            QDir(home + "/Desktop/Kext Backups").entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        QCOMPARE(backups.size(), 1);
        QVERIFY(QFileInfo::exists(home + "/Desktop/Kext Backups/" + backups.first() +
                                  "/SandboxAHCIPort.kext/Contents/Info.plist"));
        QVERIFY(runKextKeeper(root, home, {"restore", "--list"})
                    .out.contains("  Macintosh HD  Extra/Extensions  SandboxAHCIPort.kext\n"));
        const QString after = run.out.section("After the fixes:\n", 1);
        for (const char *fixed : {" D1 ", " D2 ", " D9 ", " D10 "})
            QVERIFY2(!after.contains(fixed), fixed);
        QVERIFY(after.contains(" D11 ")); // only a start of the volume rebuilds its caches
        QCOMPARE(run.status, 1);
    }
};

QTEST_GUILESS_MAIN(TestDoctor)
#include "tst_doctor.moc"

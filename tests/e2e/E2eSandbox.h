#pragma once

#include "../sandbox/SandboxFixture.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <memory>

// One fresh sandbox Mac with a home of its own, and the commands a Mac would have run for
// each task we drive on it. The window and the command-line verbs must both produce exactly
// these lists, so they are written once, here.
class E2eSandbox {
public:
    // The report lays out its path column by the longest path, so the sandbox that a report
    // is compared on lies at a fixed root: these two have the same length, one per test
    // program, so that the two programs can run at the same time.
    static QString reportRoot(const QString &program) {
        return QStringLiteral("/tmp/kk-e2e-%1/Mac's sandbox").arg(program);
    }
    static QString expectedReport(const QString &root) {
        QFile file(QStringLiteral(KK_FIXTURES "/report/sandbox-report.txt"));
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(file.readAll()).replace(reportRoot(QStringLiteral("win")), root);
    }

    // `fixedRoot` empty: a temporary root with a blank, an apostrophe and an umlaut.
    bool create(const QString &fixedRoot = {}) {
        if (!(fixedRoot.isEmpty() ? sandbox.create() : sandbox.createAt(fixedRoot)))
            return false;
        sandbox.clearLog();
        return QDir().mkpath(desktop()) && QDir().mkpath(settingsFolder());
    }

    QString home() const { return m_home.path(); }
    QString desktop() const { return home() + QStringLiteral("/Desktop"); }
    QString settingsFolder() const { return home() + QStringLiteral("/.config/kextkeeper"); }
    // A path on the started system, "Macintosh HD".
    QString r(const QString &relative = {}) const {
        return sandbox.volume(QStringLiteral("Macintosh HD/")) + relative;
    }
    QString tool(const QString &systemPath, const QStringList &args) const {
        return sandbox.logLine(systemPath, args);
    }
    QString rebuild(const QString &mkext, const QString &folder) const {
        return tool(QStringLiteral("/usr/sbin/kextcache"),
                    {"-v", "1", "-a", "i386", "-a", "x86_64", "-m", mkext, folder});
    }

    bool writeSettings(bool prelink) const {
        QFile file(settingsFolder() + QStringLiteral("/Info.plist"));
        if (!file.open(QIODevice::WriteOnly))
            return false;
        file.write(
            QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n"
                           "<dict>\n<key>Prelink Kernel</key>\n<%1/>\n"
                           "<key>Manually recreate Lion cache</key>\n<false/>\n"
                           "<key>SUCheckAtStartup</key>\n<false/>\n</dict>\n</plist>\n")
                .arg(prelink ? "true" : "false")
                .toUtf8());
        return true;
    }

    // Maintenance of "Macintosh HD" with all four options.
    QStringList maintenanceCommands(bool prelink) const {
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
        return expected;
    }

    // Two bundles in ~/Downloads: a newer copy of a kext already in Extra/Extensions, and a
    // new one with a hostile name.
    QStringList makeBundlesToInstall() const {
        const QString drop = home() + QStringLiteral("/Downloads");
        const QStringList bundles{drop + QStringLiteral("/ExampleSensors.kext"),
                                  drop + QStringLiteral("/Zed's Ü driver.kext")};
        const QStringList sources{QStringLiteral("ExampleSensors"),
                                  QStringLiteral("ExampleDiskShim")};
        for (int i = 0; i < 2; ++i) {
            QDir().mkpath(bundles[i] + QStringLiteral("/Contents"));
            QFile::copy(
                r(QStringLiteral("Extra/Extensions/%1.kext/Contents/Info.plist").arg(sources[i])),
                bundles[i] + QStringLiteral("/Contents/Info.plist"));
        }
        return bundles;
    }
    QStringList installCommands(const QStringList &bundles) const {
        const QString d = r(QStringLiteral("Extra/Extensions"));
        return {
            tool("/bin/rm", {"-Rf", d + QStringLiteral("/ExampleSensors.kext")}),
            tool("/bin/cp", {"-R", bundles[0], d}),
            tool("/bin/cp", {"-R", bundles[1], d}),
            tool("/usr/sbin/chown", {"-R", "0:0", d}),
            tool("/bin/chmod", {"-R", "755", d}),
            tool("/usr/bin/touch", {d}),
            rebuild(r(QStringLiteral("Extra/Extensions.mkext")), d),
        };
    }
    // The replaced bundle went to one dated backup folder first; the new ones are in place.
    bool installedWithBackup() const {
        const QDir backups(desktop() + QStringLiteral("/Kext Backups"));
        const QStringList runs = backups.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        const QString d = r(QStringLiteral("Extra/Extensions"));
        return runs.size() == 1 &&
               QFileInfo::exists(
                   backups.filePath(runs.first()) +
                   QStringLiteral("/ExampleSensors.kext/Contents/MacOS/ExampleSensors")) &&
               !QFileInfo::exists(d + QStringLiteral("/ExampleSensors.kext/Contents/MacOS")) &&
               QFileInfo::exists(d + QStringLiteral("/Zed's Ü driver.kext/Contents/Info.plist"));
    }

    QStringList kextStoreCommands() const {
        const QString store = r(QStringLiteral("Extra/KextStore"));
        return {tool("/bin/mv", {r(QStringLiteral("Extra/Extensions")), store}),
                rebuild(r(QStringLiteral("Extra/Extensions.mkext")), store)};
    }
    bool convertedToKextStore() const {
        return QFileInfo::exists(r(QStringLiteral("Extra/KextStore/ExampleSensors.kext"))) &&
               !QFileInfo::exists(r(QStringLiteral("Extra/Extensions")));
    }

    // A kext that loads, and one the kernel refuses (i386 only), with kextload's own text
    // (%1: the bundle).
    static void testLoadRows() {
        QTest::addColumn<QString>("bundle");
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<QString>("error");
        QTest::newRow("loads") << "Extra/Extensions/ExampleDiskShim.kext"
                               << "org.example.driver.DiskShim"
                               << "";
        QTest::newRow("i386 only")
            << "Extra/Extensions/ExampleEthernet.kext"
            << "org.example.driver.Ethernet"
            << "%1 failed to load - (libkern/kext) not loadable (reason unspecified); check the "
               "system/kernel logs for errors or try kextutil(8).\n";
    }
    QStringList testLoadCommands(const QString &kext) const {
        return {tool("/usr/sbin/chown", {"-R", "0:0", kext}), tool("/sbin/kextload", {kext})};
    }

    // The report's jobs run side by side, so their commands are compared in sorted order:
    // both halves of the loaded kexts list ask kextstat, the sections ask for both overviews.
    QStringList reportCommands() const {
        const QString kextstat = tool("/usr/sbin/kextstat", {});
        const QString profiler = QStringLiteral("/usr/sbin/system_profiler");
        QStringList commands{kextstat, kextstat, software(),
                             tool(profiler, {"SPHardwareDataType", "-detailLevel", "mini"})};
        commands.sort();
        return commands;
    }
    // Asked on its own first by the window, for the computer's name.
    QString software() const {
        return tool(QStringLiteral("/usr/sbin/system_profiler"), {"SPSoftwareDataType"});
    }
    QStringList sortedLog() const {
        QStringList lines = sandbox.logLines();
        lines.sort();
        return lines;
    }

    SandboxFixture sandbox;

private:
    QTemporaryDir m_home;
};

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
    // is compared on lies at a fixed root.
    static QString reportRoot() { return "/tmp/kk-e2e-win/Mac's sandbox"; }
    static QString expectedReport() {
        QFile file(KK_FIXTURES "/report/sandbox-report.txt");
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    // `fixedRoot` empty: a temporary root with a blank, an apostrophe and an umlaut.
    bool create(const QString &fixedRoot = {}) {
        if (!(fixedRoot.isEmpty() ? sandbox.create() : sandbox.createAt(fixedRoot)))
            return false;
        sandbox.clearLog();
        return QDir().mkpath(desktop()) && QDir().mkpath(settingsFolder());
    }

    QString home() const { return m_home.path(); }
    QString desktop() const { return home() + "/Desktop"; }
    QString settingsFolder() const { return home() + "/.config/kextkeeper"; }
    // A path on the started system, "Macintosh HD".
    QString r(const QString &relative = {}) const {
        return sandbox.volume("Macintosh HD/") + relative;
    }
    QString tool(const QString &systemPath, const QStringList &args) const {
        return sandbox.logLine(systemPath, args);
    }
    QString rebuild(const QString &mkext, const QString &folder) const {
        return tool("/usr/sbin/kextcache",
                    {"-v", "1", "-a", "i386", "-a", "x86_64", "-m", mkext, folder});
    }

    bool writeSettings(bool prelink) const {
        return writePlist(settingsFolder() + "/Info.plist",
                          QByteArray("<key>Prelink Kernel</key>") +
                              (prelink ? "<true/>" : "<false/>") +
                              "<key>Manually recreate Lion cache</key><false/>"
                              "<key>SUCheckAtStartup</key><false/>");
    }

    // Maintenance of "Macintosh HD" with all four options.
    QStringList maintenanceCommands(bool prelink) const {
        const QString extensions = r("Extra/Extensions");
        const QString sle = r("System/Library/Extensions");
        QStringList expected{
            tool("/usr/sbin/chown", {"-R", "0:0", extensions}),
            tool("/bin/chmod", {"-R", "755", extensions}),
            tool("/usr/bin/touch", {extensions}),
            rebuild(r("Extra/Extensions.mkext"), extensions),
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
            rebuild(r("Extra/Extensions.mkext"), d),
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

    QStringList kextStoreCommands() const {
        const QString store = r("Extra/KextStore");
        return {tool("/bin/mv", {r("Extra/Extensions"), store}),
                rebuild(r("Extra/Extensions.mkext"), store)};
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

    SandboxFixture sandbox;

private:
    QTemporaryDir m_home;
};

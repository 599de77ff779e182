#pragma once

#include "CliRun.h"
#include "TestScripts.h"
#include "exec/Command.h"
#include "volumes/SystemPaths.h"

#include <QTemporaryDir>
#include <QTest>

// A system root in a temporary folder with one volume below its Volumes folder. The
// volume's name has a blank, an apostrophe and non-ASCII letters so that every command
// proves it passes paths as single arguments.
class MaintenanceSandbox {
public:
    static inline const QString volume = QStringLiteral("Mac HD's Düsk");

    MaintenanceSandbox() {
        QDir().mkpath(rootPath());
        QDir().mkpath(dir.path() + QStringLiteral("/usr/sbin"));
        // kextcache is present, so the mkext commands are the system's own.
        writeScript(QDir(dir.path() + QStringLiteral("/usr/sbin")), QStringLiteral("kextcache"),
                    "exit 0\n");
    }

    SystemPaths paths() const { return SystemPaths(dir.path(), dir.path(), dir.path()); }
    QString rootPath() const { return dir.path() + QStringLiteral("/Volumes/") + volume + '/'; }

    void makeFolders(const QStringList &folders) const {
        for (const QString &folder : folders)
            QVERIFY(QDir().mkpath(rootPath() + folder));
    }
    void writeProductVersion(const QString &version) const {
        QVERIFY(writePlist(rootPath() +
                               QStringLiteral("System/Library/CoreServices/SystemVersion.plist"),
                           "<key>ProductVersion</key><string>" + version.toUtf8() + "</string>"));
    }

    // Expected commands written as "TOOL|ARG|ARG": the tool is placed below the root,
    // and "R/" at the start of an argument stands for the volume root with its slash.
    QList<Command> commands(const QStringList &lines) const {
        QList<Command> list;
        for (const QString &line : lines) {
            QStringList words = line.split(QLatin1Char('|'));
            const QString tool = dir.path() + words.takeFirst();
            for (QString &word : words)
                if (word.startsWith(QLatin1String("R/")))
                    word = rootPath() + word.mid(2);
            list << Command{tool, words, true};
        }
        return list;
    }

    QTemporaryDir dir;
};

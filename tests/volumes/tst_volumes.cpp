#include "CliRun.h"
#include "TestScripts.h"
#include "exec/AdminAuthentication.h"
#include "exec/AppServices.h"
#include "volumes/ContentsFolder.h"
#include "volumes/DiskInfo.h"
#include "volumes/KextFolders.h"
#include "volumes/SystemPaths.h"
#include "volumes/VolumeList.h"

#include <QDirIterator>
#include <QTemporaryDir>
#include <QTest>

namespace {
const QByteArray diskutilOutputs = KK_FIXTURES "/diskutil/";

void makeFolders(const QString &root, const QStringList &folders) {
    for (const QString &folder : folders)
        QDir().mkpath(root + QLatin1Char('/') + folder);
}

QByteArray fixture(const QString &name) {
    QFile file(QString::fromUtf8(diskutilOutputs) + name);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("missing fixture %s", qPrintable(name));
    return file.readAll();
}
} // namespace

// The volume list, the kext folder layout and the started-system probe on real folder
// trees and real-format diskutil output; then the real binary over a sandbox root: the
// global options and exit statuses, and `kextkeeper volumes` with a stand-in diskutil that
// answers with the same outputs and calls Macintosh HD the started system.
class TestVolumes : public QObject {
    Q_OBJECT
    QTemporaryDir m_dir;
    QString m_root;

private slots:
    void initTestCase() {
        m_root = m_dir.filePath("root");
        const SystemPaths paths(m_root);
        makeFolders(paths.volumesDir(),
                    {"Macintosh HD/System/Library/Extensions", "Macintosh HD/Extra/Extensions",
                     "Boot's Ü/Extra/KextStore", "Boot's Ü/Extra/10.6/Extensions",
                     "Backup/Documents"});
        QDir().mkpath(paths.system(QStringLiteral("/usr/sbin")));
        writeScript(QDir(paths.system(QStringLiteral("/usr/sbin"))), QStringLiteral("diskutil"),
                    "[ \"$1\" = info ] || exit 1\ncase \"$2\" in\n  */Macintosh\\ HD) cat '" +
                        diskutilOutputs + "info-startup.txt' ;;\n  *) cat '" + diskutilOutputs +
                        "info-other-volume.txt' ;;\nesac\n");
    }

    // A volume is listed when it holds Extra or System/Library, whatever its name looks like;
    // the list keeps the folder's own order, as a directory walk sees it, not a sorted one.
    void listKeepsUsableVolumes() {
        QTemporaryDir dir;
        const QString volumes = dir.path() + QStringLiteral("/Volumes");
        makeFolders(volumes, {"zeta/Extra", "Boot/Extra", "Mac HD/System/Library", "Alpha/Extra",
                              ".Hidden Vol/Extra", "Half/System", "Photos/Pictures", "Photos/extra",
                              "Empty", "to_remove/Extra"});
        QFile(volumes + QStringLiteral("/notes.txt")).open(QIODevice::WriteOnly);
        const QStringList usable{"zeta", "Boot", "Mac HD", "Alpha", ".Hidden Vol"};
        QStringList walked;
        QDirIterator it(volumes, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
        while (it.hasNext()) {
            const QString name = it.nextFileInfo().fileName();
            if (usable.contains(name))
                walked << name;
        }
        QCOMPARE(walked.size(), usable.size());
        QCOMPARE(VolumeList::build(volumes), walked);
        QVERIFY(VolumeList::build(dir.path() + QStringLiteral("/none")).isEmpty());
    }

    void extraPresence_data() {
        QTest::addColumn<QStringList>("folders");
        QTest::addColumn<QString>("version");
        QTest::addColumn<bool>("extra");
        QTest::addColumn<bool>("sle");

        QTest::newRow("Extensions") << QStringList{"Extra/Extensions"} << "" << true << false;
        QTest::newRow("KextStore only") << QStringList{"Extra/KextStore"} << "" << true << false;
        QTest::newRow("Extra without kext folders")
            << QStringList{"Extra/Themes"} << "" << false << false;
        QTest::newRow("version folder without kexts")
            << QStringList{"Extra/Extensions", "Extra/10.6"} << "10.6" << false << false;
        QTest::newRow("version folder with Extensions")
            << QStringList{"Extra/10.6/Extensions"} << "10.6" << true << false;
        QTest::newRow("S/L/E") << QStringList{"System/Library/Extensions"} << "" << false << true;
    }

    void extraPresence() {
        QFETCH(QStringList, folders);
        QFETCH(QString, version);
        QFETCH(bool, extra);
        QFETCH(bool, sle);

        QTemporaryDir dir;
        const QString rp = dir.path() + QStringLiteral("/Vol ume");
        makeFolders(rp, folders);
        QCOMPARE(KextFolders(rp, version).extraPresent(), extra);
        QCOMPARE(KextFolders(rp).slePresent(), sle);
    }

    // Which of 10.4 .. 10.7 have a folder in Extra, nested or look-alike names not counted.
    void versionFolders() {
        QTemporaryDir dir;
        makeFolders(dir.path(),
                    {"Extra/10.5", "Extra/10.7/KextStore", "Extra/10.6.8", "Extra/10.5/10.4"});
        QCOMPARE(KextFolders(dir.path()).versionFolders(), (QList<bool>{false, true, false, true}));
    }

    void diskInfo_data() {
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<bool>("startedSystem");

        QTest::newRow("started system") << fixture("info-startup.txt") << true;
        QTest::newRow("another volume") << fixture("info-other-volume.txt") << false;
        QTest::newRow("value one column further") << fixture("info-column-30.txt") << false;
        QTest::newRow("not mounted") << fixture("info-unmounted.txt") << false;
        QTest::newRow("only the first mount point counts")
            << QByteArray(
                   "   Mount Point:              /Volumes/X\n   Mount Point:              /\n")
            << false;
    }

    void diskInfo() {
        QFETCH(QByteArray, output);
        QFETCH(bool, startedSystem);
        QCOMPARE(diskInfoIsStartedSystem(QString::fromUtf8(output)), startedSystem);
    }

    // The started system is what diskutil says (run through the volumes verb's tests); without
    // the tool there is no answer, and so no started system.
    void isRootWithoutDiskutil() {
        QTemporaryDir dir;
        const SystemPaths paths(dir.path());
        QDir().mkpath(paths.volumeRoot(QStringLiteral("Mac HD")));
        AdminAuthentication session({}, nullptr, nullptr);
        const AppServices services(paths, session);
        QVERIFY(!services.isStartedSystem(paths.volumeRoot(QStringLiteral("Mac HD"))));
    }

    // Settings live in a bundle's Contents only when the executable sits in one.
    void contentsFolder_data() {
        QTest::addColumn<QString>("executable");
        QTest::addColumn<QString>("folder");
        QTest::newRow("bundle") << "/Applications/KextKeeper.app/Contents/MacOS/KextKeeper"
                                << "/Applications/KextKeeper.app/Contents";
        QTest::newRow("installed") << "/usr/bin/kextkeeper"
                                   << "/cfg/kextkeeper";
        QTest::newRow("not an .app") << "/opt/kk/Contents/MacOS/kextkeeper"
                                     << "/cfg/kextkeeper";
        QTest::newRow("not MacOS") << "/A/KextKeeper.app/Contents/Resources/kextkeeper"
                                   << "/cfg/kextkeeper";
        QTest::newRow("unknown") << ""
                                 << "/cfg/kextkeeper";
    }
    void contentsFolder() {
        QFETCH(QString, executable);
        QFETCH(QString, folder);
        QCOMPARE(ContentsFolder::forExecutable(executable, "/cfg"), folder);
    }
    void executablePathIsTheRunningProgram() {
        QCOMPARE(ContentsFolder::executablePath(),
                 QFileInfo(QCoreApplication::applicationFilePath()).canonicalFilePath());
    }

    void commandLine_data() {
        QTest::addColumn<QStringList>("args"); // after --root ROOT
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("out"); // of --help only the first line
        QTest::addColumn<QString>("err"); // the first line

        // One line per listed volume, in the order of the volume list.
        const QStringList order = VolumeList::build(SystemPaths(m_root).volumesDir());
        const auto listing = [&order](const QString &hdExtra, const QString &bootExtra) {
            QString out;
            for (const QString &title : order)
                out += title +
                       (title == QLatin1String("Macintosh HD")
                            ? "\tstarted system\tS/L/E: yes\tExtra: " + hdExtra
                            : "\t-\tS/L/E: no\tExtra: " + bootExtra) +
                       '\n';
            return out;
        };
        QTest::newRow("help") << QStringList{"--help"} << 0
                              << "Usage: kextkeeper [--root DIR] [--dry-run] [VERB [ARGS...]]"
                              << "";
        QTest::newRow("version") << QStringList{"--version"} << 0 << "kextkeeper " KK_VERSION "\n"
                                 << "";
        QTest::newRow("unknown verb") << QStringList{"frobnicate"} << 2 << ""
                                      << "kextkeeper: unknown verb frobnicate";
        QTest::newRow("unknown option") << QStringList{"--frob"} << 2 << ""
                                        << "kextkeeper: unknown option --frob";
        QTest::newRow("root without folder") << QStringList{"--root"} << 2 << ""
                                             << "kextkeeper: --root needs a folder";
        QTest::newRow("volumes") << QStringList{"volumes"} << 0 << listing("yes", "yes") << "";
        QTest::newRow("root given as --root=DIR")
            << QStringList{"--root=" + m_root, "volumes"} << 0 << listing("yes", "yes") << "";
        // Tools are started by absolute path only, so a relative root is made absolute.
        QTest::newRow("relative root")
            << QStringList{"--root", QDir::current().relativeFilePath(m_root), "volumes"} << 0
            << listing("yes", "yes") << "";
        QTest::newRow("root that does not exist")
            << QStringList{"--root", "/nonexistent/mac", "volumes"} << 2 << ""
            << "kextkeeper: --root /nonexistent/mac: no such folder";
        QTest::newRow("volumes, 10.6")
            << QStringList{"volumes", "--extra-version", "10.6"} << 0 << listing("no", "yes") << "";
        QTest::newRow("volumes, version no volume has")
            << QStringList{"volumes", "--extra-version", "10.5"} << 2 << ""
            << "kextkeeper volumes: --extra-version 10.5: no volume has Extra/10.5";
        // Qt's own options, in either spelling and with their values, are the window's.
        QTest::newRow("Qt options before a verb")
            << QStringList{"-platform", "offscreen", "--style", "fusion", "-reverse", "volumes"}
            << 0 << listing("yes", "yes") << "";
        QTest::newRow("Qt options before --help")
            << QStringList{"-qwindowgeometry", "640x480", "-platform", "offscreen", "--help"} << 0
            << "Usage: kextkeeper [--root DIR] [--dry-run] [VERB [ARGS...]]"
            << "";
        QTest::newRow("volumes, unknown version")
            << QStringList{"volumes", "--extra-version", "10.8"} << 2 << ""
            << "kextkeeper volumes: --extra-version must be one of 10.4, 10.5, 10.6, 10.7";
        QTest::newRow("volumes, missing value")
            << QStringList{"volumes", "--extra-version"} << 2 << ""
            << "kextkeeper volumes: --extra-version needs a value";
        QTest::newRow("volumes, stray word") << QStringList{"volumes", "Macintosh HD"} << 2 << ""
                                             << "kextkeeper volumes: unexpected words";
    }

    void commandLine() {
        QFETCH(QStringList, args);
        QFETCH(int, status);
        QFETCH(QString, out);
        QFETCH(QString, err);
        const CliRun run = runKextKeeper(m_root, m_dir.filePath("home"), args);
        QCOMPARE(run.status, status);
        QCOMPARE(args.endsWith("--help") ? run.out.section('\n', 0, 0) : run.out, out);
        QCOMPARE(run.err.section('\n', 0, 0), err);
    }
};

QTEST_GUILESS_MAIN(TestVolumes)
#include "tst_volumes.moc"

#include "CliRun.h"
#include "TestScripts.h"
#include "volumes/SystemPaths.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

namespace {
const QString hd = QStringLiteral("Macintosh HD");
const QString title = QStringLiteral("Mac HD's");
} // namespace

// `kextkeeper install`, `maintain` and `extra` run as real processes over a sandbox root
// and a home of their own, printing their root commands with --dry-run, and every other
// line as a shell comment.
class TestRootVerbs : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<SystemPaths> m_paths;

    CliRun run(const QStringList &args, const QByteArray &input = {}) {
        return runKextKeeper(m_paths->root(), m_paths->home(), QStringList{"--dry-run"} + args,
                             input);
    }
    QString volume(const QString &name) const { return m_paths->volumeRoot(name) + '/'; }
    void makeFolders(const QString &name, const QStringList &folders) {
        for (const QString &folder : folders)
            QVERIFY(QDir().mkpath(volume(name) + folder));
    }
    // Expected output: "%R" is the system root, "%V" the volume's root inside single
    // quotes, where an apostrophe reads '\''.
    QString expand(QString text, const QString &name) const {
        return text.replace("%R", m_paths->root())
            .replace("%V", volume(name).replace("'", "'\\''"));
    }

private slots:
    void init() {
        m_dir = std::make_unique<QTemporaryDir>();
        const QString home = m_dir->path() + QStringLiteral("/home");
        m_paths = std::make_unique<SystemPaths>(m_dir->path() + QStringLiteral("/root"), home,
                                                home + QStringLiteral("/.config/kextkeeper"));
        const QDir sbin(m_paths->system(QStringLiteral("/usr/sbin")));
        QDir().mkpath(sbin.path());
        writeScript(sbin, QStringLiteral("kextcache"), "exit 0\n");
    }

    void install_data() {
        QTest::addColumn<QStringList>("folders");
        QTest::addColumn<QStringList>("args"); // "A" and "B/": bundles, B with a trailing slash
        QTest::addColumn<int>("status");
        // Part of the error, or of the output if it worked: "%R" is the system root, "%V" the
        // volume's root and "%S" the bundles' folder, each inside single quotes.
        QTest::addColumn<QString>("expected");
        const QStringList onHd{"--volume", hd};
        const QStringList none;
        // The bundle given with a trailing slash is named and copied without it; the command
        // lists are the plan's own.
        QTest::newRow("each bundle's step before its commands")
            << QStringList{"Extra/Extensions/Drïver's B.kext"}
            << onHd + QStringList{"--to", "extra", "--backup", "A", "B/"} << 0
            << "# [1/2] A.kext\n"
               "%R/bin/cp -R '%SA.kext' '%VExtra/Extensions'\n"
               "# [2/2] Drïver's B.kext\n"
               "%R/bin/rm -Rf '%VExtra/Extensions/Drïver'\\''s B.kext'\n"
               "%R/bin/cp -R '%SDrïver'\\''s B.kext' '%VExtra/Extensions'\n"
               "%R/usr/sbin/chown -R 0:0 '%VExtra/Extensions'\n"
               "%R/bin/chmod -R 755 '%VExtra/Extensions'\n"
               "# Selected tasks were finished.\n";
        QTest::newRow("unknown destination")
            << none << onHd + QStringList{"--to", "usb", "A"} << 2 << "--to";
        QTest::newRow("extra without volume")
            << none << QStringList{"--to", "extra", "A"} << 2 << "--volume";
        QTest::newRow("unknown version")
            << none << onHd + QStringList{"--to", "extra", "--extra-version", "10.8", "A"} << 2
            << "--extra-version";
        QTest::newRow("not a bundle")
            << none << onHd + QStringList{"--to", "sle", "/etc/hosts"} << 2 << "/etc/hosts";
        QTest::newRow("missing bundle")
            << none << onHd + QStringList{"--to", "sle", "/nowhere/X.kext"} << 1
            << "no such bundle";
        QTest::newRow("empty list")
            << QStringList{"System/Library/Extensions"} << onHd + QStringList{"--to", "sle"} << 1
            << "No selected kexts to install.";
        QTest::newRow("both Extra folders") << QStringList{"Extra/Extensions", "Extra/KextStore"}
                                            << onHd + QStringList{"--to", "extra", "A"} << 1
                                            << "Both Extra/Extensions and Extra/KextStore found.";
        QTest::newRow("volume outside the volumes folder")
            << QStringList{"System/Library/Extensions"}
            << QStringList{"--volume", "../../outside", "--to", "sle", "A"} << 1
            << "no volume with an Extra or System/Library folder is called ../../outside";
        QTest::newRow("desktop needs no volume")
            << none << QStringList{"--to", "desktop", "A"} << 0 << "/.mkext_pack";
        // diskutil says "Macintosh HD" is the started system, and the settings ask for
        // prelinking.
        QTest::newRow("sle on the started system with prelink")
            << QStringList{"System/Library/Extensions"} << onHd + QStringList{"--to", "sle", "A"}
            << 0 << "kextcache -system-prelinked-kernel";
    }
    void install() {
        QFETCH(QStringList, folders);
        QFETCH(QStringList, args);
        QFETCH(int, status);
        QFETCH(QString, expected);
        QDir().mkpath(m_paths->desktop());
        QVERIFY(writePlist(m_paths->infoPlist(), "<key>Prelink Kernel</key><true/>"));
        writeScript(QDir(m_paths->system(QStringLiteral("/usr/sbin"))), QStringLiteral("diskutil"),
                    "cat '" KK_FIXTURES "/diskutil/info-startup.txt'\n");
        makeFolders(hd, folders);
        const QString kexts = m_dir->path() + QStringLiteral("/my kexts/");
        for (const char *name : {"A.kext", "Drïver's B.kext"})
            QDir().mkpath(kexts + QString::fromUtf8(name) + QStringLiteral("/Contents"));
        for (QString &arg : args)
            arg = arg == "A" ? kexts + "A.kext" : arg == "B/" ? kexts + "Drïver's B.kext/" : arg;
        expected = expand(expected.replace("%S", QString(kexts).replace("'", "'\\''")), hd);
        const CliRun result = run(QStringList{"install"} + args);
        QCOMPARE(result.status, status);
        const QString &shown = status == 0 ? result.out : result.err;
        QVERIFY2(shown.contains(expected), qPrintable(result.out + result.err));
        // A dry run changes nothing: no backup either.
        QVERIFY(!QFileInfo::exists(m_paths->desktop() + QStringLiteral("/Kext Backups")));
    }

    void maintainAndExtra_data() {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QStringList>("folders");
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<int>("status");
        // The whole output, or its first lines when the last one is left open.
        QTest::addColumn<QString>("out");
        QTest::addColumn<QString>("error");
        const QStringList maintain{"maintain", "--volume", title};
        const QStringList themes{"Extra/Themes", "System/Library/Extensions"};

        // The steps' command lists are the plan's own; here each status line comes before
        // its commands.
        QTest::newRow("repair S/L/E")
            << maintain + QStringList{"--repair-sle"} << themes << QByteArray() << 0
            << "# Repairing S/L/E permissions...\n"
               "%R/usr/sbin/chown -R 0:0 '%VSystem/Library/Extensions'\n"
               "%R/bin/chmod -R 755 '%VSystem/Library/Extensions'\n"
               "# Repairing disk permissions...\n"
               "%R/usr/sbin/diskutil repairpermissions '%V'\n"
               "# Selected tasks were finished.\n"
            << QString();
        QTest::newRow("no task") << maintain << themes << QByteArray() << 2 << QString()
                                 << "kextkeeper maintain: You haven't selected any options.\n";
        // A box the page disables on the volume is a usage error, and nothing runs.
        const QString refused = "kextkeeper maintain: %1: volume Mac HD's has no %2\n";
        QTest::newRow("Extra box without Extra kexts")
            << maintain + QStringList{"--repair-sle", "--rebuild-extra-mkext"} << themes
            << QByteArray() << 2 << QString()
            << refused.arg("--rebuild-extra-mkext", "Extra/Extensions or Extra/KextStore");
        QTest::newRow("S/L/E box without S/L/E")
            << maintain + QStringList{"--repair-extra", "--rebuild-caches"}
            << QStringList{"Extra/KextStore"} << QByteArray() << 2 << QString()
            << refused.arg("--rebuild-caches", "System/Library/Extensions");
        QTest::newRow("version without its folder")
            << maintain + QStringList{"--extra-version", "10.6", "--repair-sle"} << themes
            << QByteArray() << 2 << QString() << refused.arg("--extra-version 10.6", "Extra/10.6");
        QTest::newRow("Extra box in a version folder without kexts")
            << maintain + QStringList{"--extra-version", "10.6", "--repair-extra"}
            << QStringList{"Extra/Extensions", "Extra/10.6/Themes"} << QByteArray() << 2
            << QString()
            << refused.arg("--repair-extra", "Extra/10.6/Extensions or Extra/10.6/KextStore");
        QTest::newRow("unknown volume")
            << QStringList{"maintain", "--volume", "Nowhere", "--repair-sle"} << themes
            << QByteArray() << 1 << QString()
            << "kextkeeper maintain: no volume with an Extra or System/Library folder is called "
               "Nowhere\n";
        QTest::newRow("no volume")
            << QStringList{"maintain", "--repair-sle"} << themes << QByteArray() << 2 << QString()
            << "kextkeeper maintain: --volume NAME is needed\n";
        QTest::newRow("bad version")
            << maintain + QStringList{"--extra-version", "10.9", "--repair-extra"} << themes
            << QByteArray() << 2 << QString()
            << "kextkeeper maintain: --extra-version must be one of 10.4, 10.5, 10.6, 10.7\n";

        // The full lists are the Extra operations' own; each word must reach its operation
        // and only Yes may run it. to-kextstore with --yes runs end to end.
        const auto extra = [](const QString &command) {
            return QStringList{"extra", command, "--volume", title};
        };
        const QStringList yes{"--yes"};
        const QStringList both{"Extra/Extensions", "Extra/KextStore", "Extra/Extensions.mkext"};
        QTest::newRow("to-extensions") << extra("to-extensions") + yes << both << QByteArray() << 0
                                       << "%R/bin/rm -R '%VExtra/Extensions.mkext'" << QString();
        const QStringList kextStore{"Extra/KextStore"};
        QTest::newRow("hide") << extra("hide") + yes << kextStore << QByteArray() << 0
                              << "%R/usr/bin/chflags hidden '%VExtra'" << QString();
        QTest::newRow("show") << extra("show") + yes << kextStore << QByteArray() << 0
                              << "%R/usr/bin/chflags nohidden '%VExtra'" << QString();
        // The menu's show and hide items are disabled where Extra holds no kexts.
        QTest::newRow("hide without Extra kexts")
            << extra("hide") + yes << QStringList{"Extra/Themes"} << QByteArray() << 2 << QString()
            << "kextkeeper extra: hide: volume Mac HD's has no Extra/Extensions or "
               "Extra/KextStore\n";
        QTest::newRow("to-extensions without KextStore")
            << extra("to-extensions") + yes << QStringList{"Extra/Extensions"} << QByteArray() << 1
            << QString() << "kextkeeper extra: No Extra/KextStore found.\n";
        const QString ask =
            "# Do you want to create Extra/KextStore from Extra/Extensions on selected disk?\n"
            "# Mkext will be created, it can take a while.\n# Continue on the volume \"" +
            title + "\"? [y/N] ";
        const QStringList ext{"Extra/Extensions"};
        QTest::newRow("y on the terminal")
            << extra("to-kextstore") << ext << QByteArray("y\n") << 0
            << ask + "%R/bin/mv '%VExtra/Extensions' '%VExtra/KextStore'" << QString();
        // A no ends the question's line, changes nothing and says so.
        const QString declined = "kextkeeper extra: Nothing was changed.\n";
        QTest::newRow("n on the terminal")
            << extra("to-kextstore") << ext << QByteArray("n\n") << 1 << ask + '\n'
            << declined;
        QTest::newRow("input closed")
            << extra("to-kextstore") << ext << QByteArray() << 1 << ask + '\n'
            << declined;
    }
    void maintainAndExtra() {
        QFETCH(QStringList, args);
        QFETCH(QStringList, folders);
        QFETCH(QByteArray, input);
        QFETCH(int, status);
        QFETCH(QString, out);
        QFETCH(QString, error);
        makeFolders(title, folders);
        const CliRun result = run(args, input);
        QCOMPARE(result.status, status);
        // A usage error is one line and the hint at the verb's help.
        if (status == 2)
            error += "Try 'kextkeeper " + args.first() + " --help'.\n";
        QCOMPARE(result.err, error);
        const QStringList lines = expand(out, title).split('\n');
        if (out.isEmpty() || out.endsWith('\n'))
            QCOMPARE(result.out, expand(out, title));
        else
            QCOMPARE(result.out.split('\n').mid(0, lines.size()), lines);
    }

    void maintainSettings_data() {
        QTest::addColumn<QByteArray>("settings");
        QTest::addColumn<bool>("lionCache");
        // Prelink Kernel from the settings is run end to end; the Lion key is read here.
        QTest::newRow("Lion key") << QByteArray("<key>Manually recreate Lion cache</key><true/>")
                                  << true;
        QTest::newRow("malformed settings") << QByteArray("<key>Prelink") << false;
    }
    void maintainSettings() {
        QFETCH(QByteArray, settings);
        QFETCH(bool, lionCache);
        makeFolders(title, {"System/Library/Extensions"});
        QVERIFY(writePlist(volume(title) + "System/Library/CoreServices/SystemVersion.plist",
                           "<key>ProductVersion</key><string>10.7</string>"));
        QVERIFY(writePlist(m_paths->infoPlist(), settings));
        const CliRun result = run({"maintain", "--volume", title, "--rebuild-caches"});
        QCOMPARE(result.status, 0);
        QCOMPARE(result.out.contains("Startup/Extensions.mkext"), lionCache);
    }

    // A root command that fails: the task keeps its closing text, names the failure on
    // standard error and ends with 1; the journal has every command, the failure with
    // its error text.
    void failuresAreToldAndJournaled() {
        makeFolders(title, {"System/Library/Extensions"});
        const QDir sbin(m_paths->system(QStringLiteral("/usr/sbin")));
        writeScript(sbin, "chown", "echo \"chown: $3: Operation not permitted\" >&2\nexit 1\n");
        writeScript(sbin, "diskutil", "exit 0\n");
        QDir().mkpath(m_paths->system("/bin"));
        writeScript(QDir(m_paths->system("/bin")), "chmod", "exit 0\n");
        const CliRun result = runKextKeeper(m_paths->root(), m_paths->home(),
                                            {"maintain", "--volume", title, "--repair-sle"});
        QCOMPARE(result.status, 1);
        QVERIFY(result.out.endsWith("Selected tasks were finished.\n"));
        const QString chown =
            expand("%R/usr/sbin/chown -R 0:0 '%VSystem/Library/Extensions'", title);
        const QString failure = chown + ": exit 1: chown: " + volume(title) +
                                "System/Library/Extensions: Operation not permitted";
        QCOMPARE(result.err, "kextkeeper maintain: 1 command failed:\n  " + failure + "\n");

        const auto journal = [this](const QStringList &args) {
            return runKextKeeper(m_paths->root(), m_paths->home(), QStringList{"journal"} + args);
        };
        QCOMPARE(journal({}).out.count('\n'), 4); // chown with its error line, chmod, diskutil
        const QStringList failed = journal({"--failed"}).out.split('\n', Qt::SkipEmptyParts);
        QCOMPARE(failed.size(), 2);
        QVERIFY2(failed[0].contains("  exit 1  ") && failed[0].endsWith("  root  " + chown),
                 qPrintable(failed[0]));
        QCOMPARE(failed[1], "    chown: " + volume(title) +
                                "System/Library/Extensions: Operation not permitted");
        const QJsonObject last =
            QJsonDocument::fromJson(journal({"--last", "1", "--json"}).out.toUtf8()).object();
        const QJsonArray entries = last["entries"].toArray();
        QCOMPARE(entries.size(), 1);
        QCOMPARE(entries[0]["args"].toArray().last().toString(), volume(title));
        QCOMPARE(entries[0]["status"].toInt(), 0);
        QVERIFY(entries[0]["tool"].toString().endsWith("/usr/sbin/diskutil"));
    }
};

QTEST_GUILESS_MAIN(TestRootVerbs)
#include "tst_rootverbs.moc"

#include "CliRun.h"
#include "TestScripts.h"
#include "exec/Command.h"
#include "volumes/SystemPaths.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

// `kextkeeper install` run as a real process over a sandbox root and a home of its own.
class TestInstallVerb : public QObject {
    Q_OBJECT
private slots:
    void init();
    void dryRunPrintsStepsAndCommands();
    void statuses_data();
    void statuses();

private:
    CliRun run(const QStringList &args) {
        return runKextKeeper(m_paths->root(), m_paths->home(),
                             QStringList{"--dry-run", "install"} + args);
    }
    QString bundle(const QString &name) {
        const QString path = m_dir->path() + QStringLiteral("/my kexts/") + name;
        QDir().mkpath(path + QStringLiteral("/Contents"));
        return path;
    }
    QString volume(const QString &relative) const {
        return m_paths->volumeRoot(QStringLiteral("Macintosh HD")) + '/' + relative;
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<SystemPaths> m_paths;
};

void TestInstallVerb::init() {
    m_dir = std::make_unique<QTemporaryDir>();
    const QString home = m_dir->path() + QStringLiteral("/home");
    m_paths = std::make_unique<SystemPaths>(m_dir->path() + QStringLiteral("/root"), home,
                                            home + QStringLiteral("/.config/kextkeeper"));
    QDir().mkpath(m_paths->desktop());
    QVERIFY(writePlist(m_paths->infoPlist(), "<key>Prelink Kernel</key><true/>"));
    const QDir sbin(m_paths->system(QStringLiteral("/usr/sbin")));
    QDir().mkpath(sbin.path());
    writeScript(sbin, QStringLiteral("kextcache"), "exit 0\n");
    writeScript(sbin, QStringLiteral("diskutil"),
                "cat '" KK_FIXTURES "/diskutil/info-startup.txt'\n");
}

void TestInstallVerb::dryRunPrintsStepsAndCommands() {
    QDir().mkpath(volume(QStringLiteral("Extra/Extensions/Drïver's B.kext")));
    const QString a = bundle(QStringLiteral("A.kext"));
    const QString b = bundle(QStringLiteral("Drïver's B.kext"));
    const QString ext = volume(QStringLiteral("Extra/Extensions"));
    const auto line = [&](const char *path, const QStringList &args) {
        return Command{m_paths->system(QLatin1String(path)), args, true}.toShellLine();
    };
    // A bundle given with a trailing slash is named and copied without it.
    const CliRun result =
        run({"--volume", "Macintosh HD", "--to", "extra", "--backup", a, b + '/'});
    QCOMPARE(result.err, QString());
    QCOMPARE(result.status, 0);
    QCOMPARE(
        result.out.split('\n'),
        (QStringList{"[1/2] A.kext", line("/bin/cp", {"-R", a, ext}), "[2/2] Drïver's B.kext",
                     line("/bin/rm", {"-Rf", ext + "/Drïver's B.kext"}),
                     line("/bin/cp", {"-R", b, ext}), line("/usr/sbin/chown", {"-R", "0:0", ext}),
                     line("/bin/chmod", {"-R", "755", ext}), "Selected tasks were finished.", ""}));
    // A dry run changes nothing: no backup.
    QVERIFY(!QFileInfo::exists(m_paths->desktop() + QStringLiteral("/Kext Backups")));
}

void TestInstallVerb::statuses_data() {
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<QStringList>("args"); // "B": a bundle
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("expected"); // part of the error, or of the output if it worked
    const QStringList hd{"--volume", "Macintosh HD"};
    const QStringList none;
    QTest::newRow("unknown destination")
        << none << hd + QStringList{"--to", "usb", "B"} << 2 << "--to";
    QTest::newRow("extra without volume")
        << none << QStringList{"--to", "extra", "B"} << 2 << "--volume";
    QTest::newRow("unknown version")
        << none << hd + QStringList{"--to", "extra", "--extra-version", "10.8", "B"} << 2
        << "--extra-version";
    QTest::newRow("not a bundle") << none << hd + QStringList{"--to", "sle", "/etc/hosts"} << 2
                                  << "/etc/hosts";
    QTest::newRow("missing bundle")
        << none << hd + QStringList{"--to", "sle", "/nowhere/X.kext"} << 1 << "no such bundle";
    QTest::newRow("empty list") << QStringList{"System/Library/Extensions"}
                                << hd + QStringList{"--to", "sle"} << 1
                                << "No selected kexts to install.";
    QTest::newRow("both Extra folders") << QStringList{"Extra/Extensions", "Extra/KextStore"}
                                        << hd + QStringList{"--to", "extra", "B"} << 1
                                        << "Both Extra/Extensions and Extra/KextStore found.";
    QTest::newRow("desktop needs no volume")
        << none << QStringList{"--to", "desktop", "B"} << 0 << "/.mkext_pack";
    // diskutil says "Macintosh HD" is the started system, and the settings ask for prelinking.
    QTest::newRow("sle on the started system with prelink")
        << QStringList{"System/Library/Extensions"} << hd + QStringList{"--to", "sle", "B"} << 0
        << "kextcache -system-prelinked-kernel";
}

void TestInstallVerb::statuses() {
    QFETCH(QStringList, folders);
    QFETCH(QStringList, args);
    QFETCH(int, status);
    QFETCH(QString, expected);
    for (const QString &folder : folders)
        QDir().mkpath(volume(folder));
    args.replaceInStrings(QRegularExpression(QStringLiteral("^B$")), bundle("A.kext"));
    const CliRun result = run(args);
    QCOMPARE(result.status, status);
    const QString &shown = status == 0 ? result.out : result.err;
    QVERIFY2(shown.contains(expected), qPrintable(result.out + result.err));
}

QTEST_GUILESS_MAIN(TestInstallVerb)
#include "tst_installverb.moc"

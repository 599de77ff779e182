#include "CliRun.h"
#include "TestScripts.h"
#include "volumes/SystemPaths.h"

#include <QTemporaryDir>
#include <QTest>

// `kextkeeper install` run as a real process over a sandbox root and a home of its own.
class TestInstallVerb : public QObject {
    Q_OBJECT
private slots:
    void init();
    void runs_data();
    void runs();

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

void TestInstallVerb::runs_data() {
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<QStringList>("args"); // "A" and "B/": bundles, B with a trailing slash
    QTest::addColumn<int>("status");
    // Part of the error, or of the output if it worked: "%R" is the system root, "%V" the
    // volume's root and "%S" the bundles' folder, each inside single quotes.
    QTest::addColumn<QString>("expected");
    const QStringList hd{"--volume", "Macintosh HD"};
    const QStringList none;
    // The bundle given with a trailing slash is named and copied without it; the command
    // lists are the plan's own.
    QTest::newRow("each bundle's step before its commands")
        << QStringList{"Extra/Extensions/Drïver's B.kext"}
        << hd + QStringList{"--to", "extra", "--backup", "A", "B/"} << 0
        << "[1/2] A.kext\n"
           "%R/bin/cp -R '%SA.kext' '%VExtra/Extensions'\n"
           "[2/2] Drïver's B.kext\n"
           "%R/bin/rm -Rf '%VExtra/Extensions/Drïver'\\''s B.kext'\n"
           "%R/bin/cp -R '%SDrïver'\\''s B.kext' '%VExtra/Extensions'\n"
           "%R/usr/sbin/chown -R 0:0 '%VExtra/Extensions'\n"
           "%R/bin/chmod -R 755 '%VExtra/Extensions'\n"
           "Selected tasks were finished.\n";
    QTest::newRow("unknown destination")
        << none << hd + QStringList{"--to", "usb", "A"} << 2 << "--to";
    QTest::newRow("extra without volume")
        << none << QStringList{"--to", "extra", "A"} << 2 << "--volume";
    QTest::newRow("unknown version")
        << none << hd + QStringList{"--to", "extra", "--extra-version", "10.8", "A"} << 2
        << "--extra-version";
    QTest::newRow("not a bundle") << none << hd + QStringList{"--to", "sle", "/etc/hosts"} << 2
                                  << "/etc/hosts";
    QTest::newRow("missing bundle")
        << none << hd + QStringList{"--to", "sle", "/nowhere/X.kext"} << 1 << "no such bundle";
    QTest::newRow("empty list") << QStringList{"System/Library/Extensions"}
                                << hd + QStringList{"--to", "sle"} << 1
                                << "No selected kexts to install.";
    QTest::newRow("both Extra folders") << QStringList{"Extra/Extensions", "Extra/KextStore"}
                                        << hd + QStringList{"--to", "extra", "A"} << 1
                                        << "Both Extra/Extensions and Extra/KextStore found.";
    QTest::newRow("desktop needs no volume")
        << none << QStringList{"--to", "desktop", "A"} << 0 << "/.mkext_pack";
    // diskutil says "Macintosh HD" is the started system, and the settings ask for prelinking.
    QTest::newRow("sle on the started system with prelink")
        << QStringList{"System/Library/Extensions"} << hd + QStringList{"--to", "sle", "A"} << 0
        << "kextcache -system-prelinked-kernel";
}

void TestInstallVerb::runs() {
    QFETCH(QStringList, folders);
    QFETCH(QStringList, args);
    QFETCH(int, status);
    QFETCH(QString, expected);
    for (const QString &folder : folders)
        QDir().mkpath(volume(folder));
    const QString kexts = QFileInfo(bundle("A.kext")).path() + '/';
    bundle("Drïver's B.kext");
    for (QString &arg : args)
        arg = arg == "A" ? kexts + "A.kext" : arg == "B/" ? kexts + "Drïver's B.kext/" : arg;
    const auto quoted = [](QString path) { return path.replace("'", "'\\''"); };
    expected.replace("%R", m_paths->root())
        .replace("%V", quoted(volume({})))
        .replace("%S", quoted(kexts));
    const CliRun result = run(args);
    QCOMPARE(result.status, status);
    const QString &shown = status == 0 ? result.out : result.err;
    QVERIFY2(shown.contains(expected), qPrintable(result.out + result.err));
    // A dry run changes nothing: no backup either.
    QVERIFY(!QFileInfo::exists(m_paths->desktop() + QStringLiteral("/Kext Backups")));
}

QTEST_GUILESS_MAIN(TestInstallVerb)
#include "tst_installverb.moc"

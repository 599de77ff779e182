#include "TestScripts.h"
#include "exec/Command.h"
#include "volumes/SystemPaths.h"

#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

// `kextkeeper install` run as a real process over a sandbox root and a home of its own.
class TestInstallVerb : public QObject {
    Q_OBJECT
private slots:
    void init();
    void dryRunPrintsPlan_data();
    void dryRunPrintsPlan();
    void refusals_data();
    void refusals();
    void realRunReplacesAndBacksUp();

private:
    struct Result {
        int status;
        QString out;
        QString err;
    };
    Result run(const QStringList &args, bool dryRun);
    QString bundle(const QString &name, const QByteArray &content = "new");
    QString volume(const QString &relative) const {
        return m_paths->volumeRoot(QStringLiteral("Macintosh HD")) + '/' + relative;
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<SystemPaths> m_paths;
};

namespace {
QString tool(const SystemPaths &paths, const char *path) {
    return paths.system(QLatin1String(path));
}

QByteArray infoPlist(const QByteArray &body) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n" + body +
           "</dict>\n</plist>\n";
}

void writeFile(const QString &path, const QByteArray &bytes) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(bytes);
}

QByteArray readFile(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}
} // namespace

void TestInstallVerb::init() {
    m_dir = std::make_unique<QTemporaryDir>();
    const QString home = m_dir->path() + QStringLiteral("/home");
    m_paths = std::make_unique<SystemPaths>(m_dir->path() + QStringLiteral("/root"), home,
                                            home + QStringLiteral("/.config/kextkeeper"));
    QDir().mkpath(m_paths->desktop());
    writeFile(m_paths->infoPlist(), infoPlist("<key>Prelink Kernel</key><true/>"));
    const QDir sbin(tool(*m_paths, "/usr/sbin"));
    QDir().mkpath(sbin.path());
    writeScript(sbin, QStringLiteral("kextcache"), "exit 0\n");
    writeScript(sbin, QStringLiteral("diskutil"),
                "cat '" KK_FIXTURES "/diskutil/info-startup.txt'\n");
}

QString TestInstallVerb::bundle(const QString &name, const QByteArray &content) {
    const QString path = m_dir->path() + QStringLiteral("/my kexts/") + name;
    writeFile(path + QStringLiteral("/Contents/Info.plist"), content);
    return path;
}

TestInstallVerb::Result TestInstallVerb::run(const QStringList &args, bool dryRun) {
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("HOME"), m_paths->home());
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), m_paths->home() + QStringLiteral("/.config"));
    process.setProcessEnvironment(env);
    QStringList words{QStringLiteral("--root"), m_paths->root()};
    if (dryRun)
        words << QStringLiteral("--dry-run");
    process.start(QStringLiteral(KK_BINARY), words + QStringList{QStringLiteral("install")} + args);
    process.waitForFinished(30000);
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

void TestInstallVerb::dryRunPrintsPlan_data() {
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<QStringList>("expected"); // "@" lines are commands: tool|arg|arg...
    const QStringList rebuild{"/usr/sbin/kextcache", "-v", "1", "-a", "i386", "-a", "x86_64", "-m"};
    QTest::newRow("extra with mkext, backup of the replaced bundle")
        << QStringList{"V/Extra/Extensions/A.kext", "V/Extra/Extensions.mkext"}
        << QStringList{"--volume", "Macintosh HD",      "--to", "extra", "--backup",
                       "B/A.kext", "B/Drïver's B.kext/"}
        << QStringList{"[1/2] A.kext",
                       "@/bin/rm|-Rf|V/Extra/Extensions/A.kext",
                       "@/bin/cp|-R|B/A.kext|V/Extra/Extensions",
                       "[2/2] Drïver's B.kext",
                       "@/bin/cp|-R|B/Drïver's B.kext|V/Extra/Extensions",
                       "@/usr/sbin/chown|-R|0:0|V/Extra/Extensions",
                       "@/bin/chmod|-R|755|V/Extra/Extensions",
                       "@/usr/bin/touch|V/Extra/Extensions",
                       "@" +
                           (rebuild + QStringList{"V/Extra/Extensions.mkext", "V/Extra/Extensions"})
                               .join('|'),
                       "Selected tasks were finished."};
    QTest::newRow("sle on the started system with prelink")
        << QStringList{"V/System/Library/Extensions"}
        << QStringList{"--volume", "Macintosh HD", "--to", "sle", "B/A.kext"}
        << QStringList{"[1/1] A.kext",
                       "@/bin/cp|-R|B/A.kext|V/System/Library/Extensions",
                       "@/usr/sbin/chown|-R|0:0|V/System/Library/Extensions/A.kext",
                       "@/bin/chmod|-R|755|V/System/Library/Extensions/A.kext",
                       "@/usr/bin/touch|V/System/Library/Extensions",
                       "@/usr/sbin/kextcache|-system-caches",
                       "@/usr/sbin/kextcache|-system-prelinked-kernel",
                       "Selected tasks were finished."};
    QTest::newRow("desktop needs no volume")
        << QStringList{} << QStringList{"--to", "desktop", "B/A.kext"}
        << QStringList{"[1/1] A.kext",
                       "@/bin/cp|-R|B/A.kext|D/.mkext_pack",
                       "@/usr/sbin/chown|-R|0:0|D/.mkext_pack",
                       "@/bin/chmod|-R|755|D/.mkext_pack",
                       "@" +
                           (rebuild + QStringList{"D/Extensions.mkext", "D/.mkext_pack"}).join('|'),
                       "@/bin/rm|-R|D/.mkext_pack",
                       "Selected tasks were finished."};
}

void TestInstallVerb::dryRunPrintsPlan() {
    QFETCH(QStringList, folders);
    QFETCH(QStringList, args);
    QFETCH(QStringList, expected);
    auto place = [&](QString word) {
        if (word.startsWith(QLatin1String("V/")))
            return volume(word.mid(2));
        if (word.startsWith(QLatin1String("D/")))
            return m_paths->desktop() + word.mid(1);
        if (word.startsWith(QLatin1String("B/"))) {
            QString name = word.mid(2);
            while (name.endsWith('/'))
                name.chop(1);
            return bundle(name);
        }
        if (word.startsWith('/'))
            return m_paths->system(word);
        return word;
    };
    for (const QString &folder : folders)
        QDir().mkpath(place(folder));
    QStringList argv;
    for (const QString &arg : args)
        argv << (arg.startsWith(QLatin1String("B/")) ? place(arg) + (arg.endsWith('/') ? "/" : "")
                                                     : arg);
    QStringList lines;
    for (const QString &line : expected) {
        if (!line.startsWith('@')) {
            lines << line;
            continue;
        }
        QStringList parts = line.mid(1).split('|');
        for (QString &part : parts)
            part = place(part);
        lines << Command{parts.first(), parts.mid(1), true}.toShellLine();
    }

    const Result result = run(argv, true);
    QCOMPARE(result.err, QString());
    QCOMPARE(result.status, 0);
    QCOMPARE(result.out.split('\n'), lines + QStringList{QString()});
    // A dry run changes nothing: no backup, no staging folder.
    QVERIFY(!QFileInfo::exists(m_paths->desktop() + QStringLiteral("/Kext Backups")));
    QVERIFY(!QFileInfo::exists(m_paths->desktop() + QStringLiteral("/.mkext_pack")));
}

void TestInstallVerb::refusals_data() {
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("message");
    const QStringList hd{"--volume", "Macintosh HD"};
    QTest::newRow("no destination") << QStringList{} << hd + QStringList{"B"} << 2 << "--to";
    QTest::newRow("unknown destination")
        << QStringList{} << hd + QStringList{"--to", "usb", "B"} << 2 << "--to";
    QTest::newRow("extra without volume")
        << QStringList{} << QStringList{"--to", "extra", "B"} << 2 << "--volume";
    QTest::newRow("unknown version")
        << QStringList{} << hd + QStringList{"--to", "extra", "--extra-version", "10.8", "B"} << 2
        << "--extra-version";
    QTest::newRow("not a bundle") << QStringList{} << hd + QStringList{"--to", "sle", "/etc/hosts"}
                                  << 2 << "/etc/hosts";
    QTest::newRow("missing bundle")
        << QStringList{} << hd + QStringList{"--to", "sle", "/nowhere/X.kext"} << 1
        << "no such bundle";
    QTest::newRow("empty list") << QStringList{"V/System/Library/Extensions"}
                                << hd + QStringList{"--to", "sle"} << 1
                                << "No selected kexts to install.";
    QTest::newRow("both Extra folders") << QStringList{"V/Extra/Extensions", "V/Extra/KextStore"}
                                        << hd + QStringList{"--to", "extra", "B"} << 1
                                        << "Both Extra/Extensions and Extra/KextStore found.";
    QTest::newRow("neither Extra folder")
        << QStringList{"V/Extra"} << hd + QStringList{"--to", "extra", "B"} << 1
        << "No Extra/Extensions or Extra/KextStore found.";
    QTest::newRow("no S/L/E") << QStringList{"V/Extra/Extensions"}
                              << hd + QStringList{"--to", "sle", "B"} << 1
                              << "No System/Library/Extensions on selected disk.";
}

void TestInstallVerb::refusals() {
    QFETCH(QStringList, folders);
    QFETCH(QStringList, args);
    QFETCH(int, status);
    QFETCH(QString, message);
    for (const QString &folder : folders)
        QDir().mkpath(volume(folder.mid(2)));
    args.replaceInStrings(QRegularExpression(QStringLiteral("^B$")), bundle("A.kext"));
    const Result result = run(args, true);
    QCOMPARE(result.status, status);
    QVERIFY2(result.err.contains(message), qPrintable(result.err));
    // Nothing was planned, so no command was printed.
    QVERIFY2(!result.out.contains(QStringLiteral("/bin/")), qPrintable(result.out));
}

void TestInstallVerb::realRunReplacesAndBacksUp() {
    // Stand-ins for the root tools: the real copy, removal and modes; ownership can't
    // be given away without root, so that one does nothing.
    const QDir bin(tool(*m_paths, "/bin"));
    const QDir usrBin(tool(*m_paths, "/usr/bin"));
    QDir().mkpath(bin.path());
    QDir().mkpath(usrBin.path());
    writeScript(bin, QStringLiteral("rm"), "exec /bin/rm \"$@\"\n");
    writeScript(bin, QStringLiteral("cp"), "exec /bin/cp \"$@\"\n");
    writeScript(bin, QStringLiteral("chmod"), "exec /bin/chmod \"$@\"\n");
    writeScript(usrBin, QStringLiteral("touch"), "exec /usr/bin/touch \"$@\"\n");
    writeScript(QDir(tool(*m_paths, "/usr/sbin")), QStringLiteral("chown"), "exit 0\n");

    const QString sle = volume(QStringLiteral("System/Library/Extensions"));
    writeFile(sle + QStringLiteral("/Drïver's B.kext/Contents/Info.plist"), "old");
    const QString source = bundle(QStringLiteral("Drïver's B.kext"), "new");
    const Result result =
        run({QStringLiteral("--volume"), QStringLiteral("Macintosh HD"), QStringLiteral("--to"),
             QStringLiteral("sle"), QStringLiteral("--backup"), source},
            false);
    QCOMPARE(result.err, QString());
    QCOMPARE(result.out, QStringLiteral("[1/1] Drïver's B.kext\nSelected tasks were finished.\n"));
    QCOMPARE(result.status, 0);
    QCOMPARE(readFile(sle + QStringLiteral("/Drïver's B.kext/Contents/Info.plist")),
             QByteArray("new"));
    const QStringList runs = QDir(m_paths->desktop() + QStringLiteral("/Kext Backups"))
                                 .entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    QCOMPARE(runs.size(), 1);
    QVERIFY2(QRegularExpression(QStringLiteral("^\\d\\d-\\d\\d \\d\\d_\\d\\d_\\d\\d$"))
                 .match(runs.first())
                 .hasMatch(),
             qPrintable(runs.first()));
    QCOMPARE(readFile(m_paths->desktop() + QStringLiteral("/Kext Backups/") + runs.first() +
                      QStringLiteral("/Drïver's B.kext/Contents/Info.plist")),
             QByteArray("old"));
}

QTEST_GUILESS_MAIN(TestInstallVerb)
#include "tst_installverb.moc"

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
    void dryRunPrintsStepsAndCommands();
    void statuses_data();
    void statuses();

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

void TestInstallVerb::dryRunPrintsStepsAndCommands() {
    QDir().mkpath(volume(QStringLiteral("Extra/Extensions/A.kext")));
    QDir().mkpath(volume(QStringLiteral("Extra/Extensions.mkext")));
    const QString a = bundle(QStringLiteral("A.kext"));
    const QString b = bundle(QStringLiteral("Drïver's B.kext"));
    const QString ext = volume(QStringLiteral("Extra/Extensions"));
    const auto line = [&](const char *path, const QStringList &args) {
        return Command{tool(*m_paths, path), args, true}.toShellLine();
    };
    // A bundle given with a trailing slash is named and copied without it.
    const Result result =
        run({"--volume", "Macintosh HD", "--to", "extra", "--backup", a, b + '/'}, true);
    QCOMPARE(result.err, QString());
    QCOMPARE(result.status, 0);
    QCOMPARE(
        result.out.split('\n'),
        (QStringList{"[1/2] A.kext", line("/bin/rm", {"-Rf", ext + "/A.kext"}),
                     line("/bin/cp", {"-R", a, ext}), "[2/2] Drïver's B.kext",
                     line("/bin/cp", {"-R", b, ext}), line("/usr/sbin/chown", {"-R", "0:0", ext}),
                     line("/bin/chmod", {"-R", "755", ext}), line("/usr/bin/touch", {ext}),
                     line("/usr/sbin/kextcache",
                          {"-v", "1", "-a", "i386", "-a", "x86_64", "-m", ext + ".mkext", ext}),
                     "Selected tasks were finished.", ""}));
    // A dry run changes nothing: no backup.
    QVERIFY(!QFileInfo::exists(m_paths->desktop() + QStringLiteral("/Kext Backups")));
}

void TestInstallVerb::statuses_data() {
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<QStringList>("args"); // "B": a bundle
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("message");
    QTest::addColumn<QString>("printed"); // part of a printed command; empty: none printed
    const QStringList hd{"--volume", "Macintosh HD"};
    QTest::newRow("no destination") << QStringList{} << hd + QStringList{"B"} << 2 << "--to"
                                    << "";
    QTest::newRow("unknown destination")
        << QStringList{} << hd + QStringList{"--to", "usb", "B"} << 2 << "--to"
        << "";
    QTest::newRow("extra without volume")
        << QStringList{} << QStringList{"--to", "extra", "B"} << 2 << "--volume"
        << "";
    QTest::newRow("unknown version")
        << QStringList{} << hd + QStringList{"--to", "extra", "--extra-version", "10.8", "B"} << 2
        << "--extra-version"
        << "";
    QTest::newRow("not a bundle") << QStringList{} << hd + QStringList{"--to", "sle", "/etc/hosts"}
                                  << 2 << "/etc/hosts"
                                  << "";
    QTest::newRow("missing bundle")
        << QStringList{} << hd + QStringList{"--to", "sle", "/nowhere/X.kext"} << 1
        << "no such bundle"
        << "";
    QTest::newRow("empty list") << QStringList{"System/Library/Extensions"}
                                << hd + QStringList{"--to", "sle"} << 1
                                << "No selected kexts to install."
                                << "";
    QTest::newRow("both Extra folders") << QStringList{"Extra/Extensions", "Extra/KextStore"}
                                        << hd + QStringList{"--to", "extra", "B"} << 1
                                        << "Both Extra/Extensions and Extra/KextStore found."
                                        << "";
    QTest::newRow("desktop needs no volume")
        << QStringList{} << QStringList{"--to", "desktop", "B"} << 0 << ""
        << "/.mkext_pack";
    // diskutil says "Macintosh HD" is the started system, and the settings ask for prelinking.
    QTest::newRow("sle on the started system with prelink")
        << QStringList{"System/Library/Extensions"} << hd + QStringList{"--to", "sle", "B"} << 0
        << ""
        << "kextcache -system-prelinked-kernel";
}

void TestInstallVerb::statuses() {
    QFETCH(QStringList, folders);
    QFETCH(QStringList, args);
    QFETCH(int, status);
    QFETCH(QString, message);
    QFETCH(QString, printed);
    for (const QString &folder : folders)
        QDir().mkpath(volume(folder));
    args.replaceInStrings(QRegularExpression(QStringLiteral("^B$")), bundle("A.kext"));
    const Result result = run(args, true);
    QCOMPARE(result.status, status);
    QVERIFY2(result.err.contains(message), qPrintable(result.err));
    if (printed.isEmpty())
        QVERIFY2(!result.out.contains(QStringLiteral("/bin/")), qPrintable(result.out));
    else
        QVERIFY2(result.out.contains(printed), qPrintable(result.out));
}

QTEST_GUILESS_MAIN(TestInstallVerb)
#include "tst_installverb.moc"

#include "CliRun.h"
#include "EndText.h"
#include "RecordingExecutor.h"
#include "SmallVolume.h"
#include "TestScripts.h"
#include "TestServices.h"
#include "UserRights.h"
#include "exec/AdminAuthentication.h"
#include "exec/SessionExecutor.h"
#include "install/FileTree.h"
#include "install/InstallList.h"
#include "install/InstallPlan.h"
#include "install/InstallView.h"
#include "install/KextBackup.h"

#include <QDir>
#include <QFile>
#include <QMimeData>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

namespace {
const QString volume = QStringLiteral("Boot's Ü");
const QDateTime fixedTime(QDate(2011, 3, 5), QTime(14, 7, 9));

// Writes every effect of an installation as one line, so a test can state the whole
// sequence the page would show.
class RecordingInstallView final : public InstallView {
public:
    QStringList events;
    void progressPrepared(int maximum) override { events << "max " + QString::number(maximum); }
    void taskState(const QString &rootPath, const QString &backupFolder) override {
        events << "state " + rootPath + '|' + backupFolder;
    }
    void setControlsEnabled(bool on) override { events << (on ? "enable" : "disable"); }
    void setWorking(bool on) override { events << "working " + QString::number(on); }
    void bundleStarted(int index, int count, const QString &) override {
        events << QStringLiteral("bundle %1/%2").arg(index).arg(count);
    }
    void setIndeterminate(bool on) override { events << "indeterminate " + QString::number(on); }
    void reevaluateVolume() override { events << "reevaluate"; }
    void commandsFailed(const QStringList &lines) override {
        events << "failed " + lines.join('|');
    }
    void progressReset() override { events << "reset"; }
};

// Does what rm -Rf and cp -R would do as root, so a backup taken too late (or not at
// all) shows up as lost content.
class FileExecutor final : public Executor {
public:
    QStringList lines; // "TOOL FIRST-ARGUMENT"
    bool authorize() override { return true; }
    CommandResult run(const Command &command) override {
        const QString tool = QFileInfo(command.tool).fileName();
        lines << tool + ' ' + command.args.value(0);
        if (tool == QLatin1String("rm"))
            QDir(command.args.last()).removeRecursively();
        if (tool == QLatin1String("cp")) {
            const QString from = command.args.at(1);
            KextBackup::copyTree(from, command.args.at(2) + '/' + QFileInfo(from).fileName());
        }
        return {};
    }
};
// Runs the commands for real and notes each tool's name. With a filler file set, the file
// system under it is filled up to `leave` free bytes when the first copy starts, as if
// something else wrote there meanwhile.
class FillingExecutor final : public Executor {
public:
    explicit FillingExecutor(Executor &real) : m_real(real) {}
    QStringList tools;
    QString filler;
    qint64 leave = 0;

    bool authorize() override { return m_real.authorize(); }
    CommandResult run(const Command &command) override {
        tools << QFileInfo(command.tool).fileName();
        if (!filler.isEmpty() && tools.last() == QLatin1String("cp")) {
            QFile file(filler);
            qint64 left = FileTree::room(filler).value_or(FileTree::Room{}).freeBytes - leave;
            if (file.open(QIODevice::WriteOnly))
                for (; left > 0; left -= 4096)
                    file.write(QByteArray(4096, 'x'));
            filler.clear();
        }
        return m_real.run(command);
    }

private:
    Executor &m_real;
};
} // namespace

using Expected = QList<QStringList>;
Q_DECLARE_METATYPE(Expected)

// The installation plan on real folder trees: the root commands it runs, in order, and
// what the page is shown while it runs; and the install list as the table sees it.
class TestInstall : public QObject {
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_root;
    std::unique_ptr<SystemPaths> m_paths;
    std::unique_ptr<TestServices> m_test;

    // Folders and files below the sandbox: "V/..." is the volume "Boot's Ü", "S/..."
    // the folder the bundles come from, "D/..." the desktop, "C/..." settings, "R/..."
    // the system root itself.
    QString place(const QString &word) const {
        const QString base = word.startsWith(QLatin1String("V/"))   ? m_paths->volumeRoot(volume)
                             : word.startsWith(QLatin1String("S/")) ? m_dir->path() + "/my kexts"
                             : word.startsWith(QLatin1String("D/")) ? m_paths->desktop()
                             : word.startsWith(QLatin1String("C/")) ? m_paths->contentsDir()
                             : word.startsWith(QLatin1String("R/")) ? m_root
                                                                    : QString();
        return base.isNull() ? word : base + word.mid(1);
    }
    QStringList expand(QStringList words) const {
        for (QString &word : words)
            word = place(word);
        return words;
    }
    // "V/Extra/Extensions/A.kext" makes a folder; "C/Info.plist=<xml body>" a plist file.
    void make(const QStringList &entries) const {
        for (const QString &entry : entries) {
            const qsizetype eq = entry.indexOf(QLatin1Char('='));
            if (eq < 0)
                QDir().mkpath(place(entry));
            else
                QVERIFY(writePlist(place(entry.left(eq)), entry.mid(eq + 1).toUtf8()));
        }
    }
    QByteArray read(const QString &word) const {
        QFile file(place(word));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
    }
    InstallOptions options(const QString &destination, const QStringList &bundles) const {
        InstallOptions o;
        o.bundles = expand(bundles);
        o.volume = volume;
        o.toExtra = destination == QLatin1String("extra");
        o.toSle = destination == QLatin1String("sle");
        o.toDesktop = destination == QLatin1String("desktop");
        return o;
    }

private slots:
    void init() {
        m_dir = std::make_unique<QTemporaryDir>();
        m_root = m_dir->path() + QStringLiteral("/root");
        m_paths = std::make_unique<SystemPaths>(m_root, m_dir->path() + QStringLiteral("/home"),
                                                m_dir->path() + QStringLiteral("/contents"));
        m_test = std::make_unique<TestServices>(*m_paths);
        // With kextcache present the mkext is rebuilt by it, as on a real Mac.
        QDir().mkpath(m_paths->system(QStringLiteral("/usr/sbin")));
        writeScript(QDir(m_paths->system(QStringLiteral("/usr/sbin"))), QStringLiteral("kextcache"),
                    "exit 0\n");
    }

    void commands_data() {
        QTest::addColumn<QStringList>("tree");
        QTest::addColumn<QString>("destination");
        QTest::addColumn<QString>("version");
        QTest::addColumn<bool>("startedSystem");
        QTest::addColumn<bool>("prelink");
        QTest::addColumn<bool>("lion"); // "Manually recreate Lion cache" is set
        QTest::addColumn<QStringList>("bundles");
        QTest::addColumn<Expected>("expected");

        using L = QStringList;
        const auto rm = [](const QString &path) { return L{"R/bin/rm", "-Rf", path}; };
        const auto cp = [](const QString &from, const QString &to) {
            return L{"R/bin/cp", "-R", from, to};
        };
        const auto own = [](const QString &path) {
            return L{"R/usr/sbin/chown", "-R", "0:0", path};
        };
        const auto mode = [](const QString &path) { return L{"R/bin/chmod", "-R", "755", path}; };
        const auto touch = [](const QString &path) { return L{"R/usr/bin/touch", path}; };
        const auto mkext = [](const QString &archive, const QString &folder) {
            return L{"R/usr/sbin/kextcache",
                     "-v",
                     "1",
                     "-a",
                     "i386",
                     "-a",
                     "x86_64",
                     "-m",
                     archive,
                     folder};
        };
        const QString a = QStringLiteral("S/A.kext");
        const QString b = QStringLiteral("S/Drïver's B.kext");
        const QStringList two{a, b};

        // Extra/Extensions with an mkext is run end to end; here the branches around it.
        const QString ext = QStringLiteral("V/Extra/Extensions");
        QTest::newRow("extra: no mkext, no touch and no rebuild; only the old copy removed")
            << L{ext + "/Drïver's B.kext"} << "extra"
            << "" << false << false << false << two
            << Expected{cp(a, ext), rm(ext + "/Drïver's B.kext"), cp(b, ext), own(ext), mode(ext)};
        const QString store = QStringLiteral("V/Extra/KextStore");
        QTest::newRow("extra: KextStore only always rebuilds, without touch")
            << L{store} << "extra"
            << "" << false << false << false << L{a}
            << Expected{cp(a, store), own(store), mode(store),
                        mkext("V/Extra/Extensions.mkext", store)};
        const QString v106 = QStringLiteral("V/Extra/10.6/Extensions");
        QTest::newRow("extra: version folder 10.6 is used, plain Extra left alone")
            << L{ext + "/A.kext", "V/Extra/Extensions.mkext", v106, v106 + ".mkext"} << "extra"
            << "10.6" << false << false << false << L{a}
            << Expected{cp(a, v106), own(v106), mode(v106), touch(v106),
                        mkext(v106 + ".mkext", v106)};
        // Removing the installed copy first would delete the very bundle to be copied.
        QTest::newRow("extra: a bundle picked from its own destination stays in place")
            << L{} << "extra"
            << "" << false << false << false << L{ext + "/A.kext"} << Expected{own(ext), mode(ext)};

        const QString sle = QStringLiteral("V/System/Library/Extensions");
        const QString sleB = sle + "/Drïver's B.kext";
        const Expected sleInstall{
            rm(sle + "/A.kext"), cp(a, sle), own(sle + "/A.kext"), mode(sle + "/A.kext"),
            cp(b, sle),          own(sleB),  mode(sleB),           touch(sle)};
        const Expected systemCaches{{"R/usr/sbin/kextcache", "-system-caches"},
                                    {"R/usr/sbin/kextcache", "-system-prelinked-kernel"}};
        const L sleTree{sle + "/A.kext"};
        QTest::newRow("sle: started system with prelink rebuilds the system caches")
            << sleTree << "sle"
            << "" << true << true << false << two << sleInstall + systemCaches;
        const QString version = QStringLiteral("V/System/Library/CoreServices/SystemVersion.plist="
                                               "<key>ProductVersion</key><string>%1</string>");
        // The system caches need both the started system and Prelink Kernel: each of the
        // next two rows lacks one of them.
        QTest::newRow("sle: Lion cache rebuilt by hand on 10.7; started system without prelink")
            << sleTree + L{version.arg("10.7.5")} << "sle"
            << "" << true << false << true << two
            << sleInstall +
                   Expected{mkext(
                       "V/System/Library/Caches/com.apple.kext.caches/Startup/Extensions.mkext",
                       sle)};
        QTest::newRow("sle: Lion volume but the setting is off; other volume with prelink")
            << sleTree + L{version.arg("10.7")} << "sle"
            << "" << false << true << false << two << sleInstall;

        const QString pack = QStringLiteral("D/.mkext_pack");
        QTest::newRow("desktop: staging folder packed into Extensions.mkext")
            << L{ext} << "desktop"
            << "" << true << true << false << two
            << Expected{cp(a, pack), cp(b, pack), own(pack), mode(pack)} +
                   Expected{mkext("D/Extensions.mkext", pack), L{"R/bin/rm", "-R", pack}};
    }
    void commands() {
        QFETCH(QStringList, tree);
        QFETCH(QString, destination);
        QFETCH(QString, version);
        QFETCH(bool, startedSystem);
        QFETCH(bool, prelink);
        QFETCH(bool, lion);
        QFETCH(QStringList, bundles);
        QFETCH(Expected, expected);
        make(tree);
        make(bundles);

        InstallOptions chosen = options(destination, bundles);
        chosen.extraVersion = version;
        chosen.prelinkKernel = prelink;
        chosen.recreateLionCache = lion;
        RecordingExecutor executor;
        RecordingInstallView view;
        QStringList asked;
        m_test->services.setStartedSystemCheck([&](const QString &path) {
            asked << path;
            return startedSystem;
        });
        InstallPlan plan(chosen, m_test->services, executor, view);
        QVERIFY(!plan.prepare());
        plan.run();

        QList<Command> want;
        for (const QStringList &words : expected) {
            const QStringList placed = expand(words);
            want << Command{placed.first(), placed.mid(1), true};
        }
        QCOMPARE(executor.commands, want);
        // The started system is asked about with the root path as the commands use it.
        for (const QString &path : asked)
            QCOMPARE(path, m_paths->volumeRoot(volume) + QLatin1Char('/'));
    }

    void viewSequence_data() {
        QTest::addColumn<QStringList>("tree");
        QTest::addColumn<QString>("destination");
        QTest::addColumn<QStringList>("expected");
        const QString rp = QStringLiteral("state %1/|");
        const QStringList start{"max 1", "disable", "working 1"};
        const QString done = QStringLiteral("info Selected tasks were finished.");
        const QStringList finish{"indeterminate 1", "indeterminate 0", "enable", "reevaluate",
                                 "working 0",       "reset",           done};
        QTest::newRow("extra finished")
            << QStringList{"V/Extra/Extensions"} << "extra"
            << start + QStringList{rp, "bundle 0/2", "bundle 1/2"} + finish;
        QTest::newRow("extra neither folder")
            << QStringList{"V/Extra"} << "extra"
            << start + QStringList{rp, "enable", "working 0", "reevaluate",
                                   "error No Extra/Extensions or Extra/KextStore found."};
        QTest::newRow("sle missing: no re-evaluation")
            << QStringList{"V/Extra/Extensions"} << "sle"
            << start + QStringList{rp, "enable", "working 0",
                                   "error No System/Library/Extensions on selected disk."};
    }
    void viewSequence() {
        QFETCH(QStringList, tree);
        QFETCH(QString, destination);
        QFETCH(QStringList, expected);
        make(tree);
        make({"S/A.kext", "S/B.kext"});
        RecordingExecutor executor;
        RecordingInstallView view;
        InstallPlan plan(options(destination, {"S/A.kext", "S/B.kext"}), m_test->services, executor,
                         view);
        QVERIFY(!plan.prepare());
        view.events << endText(plan.run());
        expected.replaceInStrings(QStringLiteral("%1"), m_paths->volumeRoot(volume));
        QCOMPARE(view.events, expected);
        // A folder error stops the plan before any root command.
        QCOMPARE(executor.commands.isEmpty(), expected.last().startsWith(QLatin1String("error")));
    }

    // The page's progress maximum ("max 1" for two bundles) is in the view sequences.
    void prepareStopsWithoutBundlesOrPassword() {
        RecordingExecutor executor;
        RecordingInstallView view;
        InstallPlan empty(InstallOptions{}, m_test->services, executor, view);
        QCOMPARE(endText(empty.prepare().value()),
                 QStringList{"error No selected kexts to install."});
        QCOMPARE(executor.authorizeCalls, 0); // no password asked for nothing to do
        QVERIFY(view.events.isEmpty());

        // A refused password ends it silently.
        executor.grant = false;
        view.events.clear();
        InstallPlan refused(options("extra", {"S/A.kext"}), m_test->services, executor, view);
        QCOMPARE(refused.prepare(), std::optional(TaskResult::failed()));
        QCOMPARE(executor.authorizeCalls, 1);
        QVERIFY(view.events.isEmpty());
    }

    void backupBeforeReplacing_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("installed"); // an older copy is in Extra/Extensions
        QTest::addColumn<int>("times");      // the same bundle listed this often
        QTest::newRow("blanks, apostrophe, non-ASCII") << "Drïver's Nämé.kext" << true << 1;
        QTest::newRow("new bundle: no backup folder") << "A.kext" << false << 1;
        // The second backup would replace the first: it goes to the next second's folder.
        QTest::newRow("same bundle twice, two backup folders") << "A.kext" << true << 2;
    }
    void backupBeforeReplacing() {
        QFETCH(QString, name);
        QFETCH(bool, installed);
        QFETCH(int, times);
        const QString info = '/' + name + QStringLiteral("/Contents/Info.plist");
        make({"V/Extra/Extensions/Other.kext", "S" + info + "=new"});
        if (installed)
            make({"V/Extra/Extensions" + info + "=old"});
        InstallOptions chosen = options("extra", QStringList(times, "S/" + name));
        chosen.backup = true;
        FileExecutor executor;
        RecordingInstallView view;
        InstallPlan plan(chosen, m_test->services, executor, view);
        plan.setClock([] { return fixedTime; });
        plan.run();

        QVERIFY(read("V/Extra/Extensions" + info).contains("new"));
        QCOMPARE(QFileInfo::exists(place("D/Kext Backups")), installed);
        if (installed) {
            QVERIFY(read("D/Kext Backups/05-03 14_07_09" + info).contains("old"));
            QCOMPARE(QFileInfo::exists(place("D/Kext Backups/05-03 14_07_10" + info)), times == 2);
            QVERIFY(view.events.contains(
                QStringLiteral("state %1/|05-03 14_07_09").arg(m_paths->volumeRoot(volume))));
        }
        QCOMPARE(executor.lines.count(QStringLiteral("rm -Rf")), installed ? times : 0);
        QCOMPARE(executor.lines.count(QStringLiteral("cp -R")), times);
    }

    // Real folders and real cp and rm: each case ends with the old kext in place (or put
    // back) and one clear message, or, where nothing can help, with the message saying
    // what is missing. Words of `tree`: "X/..." a folder, "X/...=text" a file, "=~" a file
    // of 1.5 MB, "X/...>target" a link; a trailing "!" makes it unreadable to the user.
    // `volume` mounts a file system of that size on the volume; `leave` fills it up to
    // that many free bytes when the first copy starts, as if something else wrote there.
    void safety_data() {
        QTest::addColumn<QStringList>("tree");
        QTest::addColumn<QString>("destination");
        QTest::addColumn<bool>("backup");
        QTest::addColumn<QString>("volume");
        QTest::addColumn<int>("leave");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QStringList>("tools");
        QTest::addColumn<QString>("installed"); // in V/Extra/Extensions/A.kext afterwards
        QTest::addColumn<QString>("backupAt");  // the folder that holds the old copy
        using L = QStringList;
        const QString old = QStringLiteral("V/Extra/Extensions/A.kext/Contents/Info.plist=old");
        const QString fresh = QStringLiteral("S/A.kext/Contents/Info.plist=new");
        const QString big = QStringLiteral("S/A.kext/Contents/big=~");
        const QString run = QStringLiteral("D/Kext Backups/05-03 14_07_09");
        const QString shownRun = QStringLiteral("%D/Kext Backups/05-03 14_07_09");
        const L nothing;
        QTest::newRow("source removed after it was listed")
            << L{old, fresh} << "extra" << true << "" << 0
            << "Nothing was installed: Gone.kext is no longer at" << nothing << "old"
            << "";
        QTest::newRow("unreadable file in the new kext")
            << L{old, fresh, "S/A.kext/Contents/key=x!"} << "extra" << false << "" << 0
            << "%S/A.kext/Contents/key is not readable" << nothing << "old"
            << "";
        QTest::newRow("unreadable file in the kext to back up")
            << L{old + "!", fresh} << "extra" << true << "" << 0
            << "cannot be backed up: %V/Extra/Extensions/A.kext/Contents/Info.plist is not "
               "readable"
            << nothing << "old"
            << "";
        QTest::newRow("read-only desktop")
            << L{old, fresh, "D/!"} << "extra" << true << "" << 0
            << "the backup folder %D/Kext Backups cannot be created" << nothing << "old"
            << "";
        // Another run's folder of the same second is left alone; the backup keeps a link.
        QTest::newRow("dated folder already holds the name")
            << L{old, "V/Extra/Extensions/A.kext/Link>Contents/Info.plist", fresh,
                 run + "/A.kext/Contents/Info.plist=other"}
            << "extra" << true << "" << 0 << "Selected tasks were finished."
            << L{"rm", "cp", "chown", "chmod"} << "new"
            << "D/Kext Backups/05-03 14_07_10";
        QTest::newRow("full volume") << L{old, big} << "extra" << true << "1m" << 0
                                     << "%V/Extra/Extensions has" << nothing << "old"
                                     << "";
        QTest::newRow("volume fills up while copying, with a backup")
            << L{old, big, fresh} << "extra" << true << "4m" << 300000
            << "The previous copy was put back from " + shownRun + "."
            << L{"rm", "cp", "rm", "cp", "chown", "chmod"} << "old" << run;
        QTest::newRow("volume fills up while copying, without a backup")
            << L{old, big, fresh} << "extra" << false << "4m" << 300000
            << "there is no backup of it: %V/Extra/Extensions has no A.kext now."
            << L{"rm", "cp", "rm", "chown", "chmod"} << "<missing>"
            << "";
        QTest::newRow("stale staging folder of ours is removed first")
            << L{fresh, "D/.mkext_pack/.kextkeeper-staging=", "D/.mkext_pack/Old.kext"} << "desktop"
            << false << "" << 0 << "Selected tasks were finished."
            << L{"rm", "cp", "chown", "chmod", "kextcache", "rm"} << "<missing>"
            << "";
        QTest::newRow("someone else's staging folder is refused")
            << L{fresh, "D/.mkext_pack/Mine.kext"} << "desktop" << false << "" << 0
            << "%D/.mkext_pack is in the way" << nothing << "<missing>"
            << "";
    }
    void safety() {
        QFETCH(QStringList, tree);
        QFETCH(QString, destination);
        QFETCH(bool, backup);
        QFETCH(QString, volume);
        QFETCH(int, leave);
        QFETCH(QString, message);
        QFETCH(QStringList, tools);
        QFETCH(QString, installed);
        QFETCH(QString, backupAt);
        std::unique_ptr<SmallVolume> small;
        if (!volume.isEmpty()) {
            small = std::make_unique<SmallVolume>(place("V/"), volume);
            if (!small->mounted())
                QSKIP("only root can mount a small file system here");
        }
        QStringList locked;
        for (QString entry : tree) {
            if (entry.endsWith('!')) {
                entry.chop(1);
                locked << place(entry.section('=', 0, 0));
            }
            const qsizetype arrow = entry.indexOf('>');
            if (arrow > 0) {
                QVERIFY(QFile::link(entry.mid(arrow + 1), place(entry.left(arrow))));
                continue;
            }
            if (entry.endsWith("=~"))
                entry = entry.chopped(1) + QString(1500000, 'b');
            make({entry.endsWith('=') ? entry + "x" : entry});
        }
        for (const QString &path : locked)
            QFile::setPermissions(path, QFileInfo(path).isDir() ? QFile::ReadOwner | QFile::ExeOwner
                                                                : QFileDevice::Permissions());
        // The tools are the host's, behind the sandbox's paths.
        for (const QString tool : {"/bin/cp", "/bin/rm", "/bin/chmod", "/usr/sbin/chown"}) {
            const QString name = QFileInfo(tool).fileName();
            QDir().mkpath(m_paths->system(QFileInfo(tool).path()));
            writeScript(QDir(m_paths->system(QFileInfo(tool).path())), name,
                        "exec '" + QStandardPaths::findExecutable(name).toUtf8() + "' \"$@\"\n");
        }

        InstallOptions chosen = options(destination, {"S/Gone.kext", "S/A.kext"});
        if (!message.contains("Gone"))
            chosen.bundles.removeFirst();
        chosen.backup = backup;
        AdminAuthentication session({{}, true, {}}, nullptr, nullptr);
        SessionExecutor real(session);
        FillingExecutor executor(real);
        if (leave > 0) {
            executor.filler = place("V/filler");
            executor.leave = leave;
        }
        RecordingInstallView view;
        InstallPlan plan(chosen, m_test->services, executor, view);
        plan.setClock([] { return fixedTime; });
        {
            UserRights user;
            if (!user.works())
                QSKIP("this root cannot take on a user's rights");
            view.events << endText(plan.run());
        }
        for (const QString &path : locked)
            QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

        const QString shown = view.events.filter(QRegularExpression("^(error|info) ")).join('\n');
        message.replace("%V", place("V/").chopped(1))
            .replace("%S", place("S/").chopped(1))
            .replace("%D", place("D/").chopped(1));
        QVERIFY2(shown.contains(message), qPrintable(shown));
        QCOMPARE(executor.tools, tools);
        QVERIFY(read("V/Extra/Extensions/A.kext/Contents/Info.plist").contains(installed.toUtf8()));
        if (!backupAt.isEmpty())
            QVERIFY(read(backupAt + "/A.kext/Contents/Info.plist").contains("old"));
        if (tree.join(' ').contains('>'))
            QVERIFY(QFileInfo(place(backupAt + "/A.kext/Link")).isSymLink());
        // Another run's backup folder is never written into.
        if (tree.join(' ').contains("=other"))
            QVERIFY(
                read("D/Kext Backups/05-03 14_07_09/A.kext/Contents/Info.plist").contains("other"));
    }

    // What a drop onto the table adds, and the bundle names installed under.
    void dropFilter_data() {
        QTest::addColumn<QStringList>("dropped");
        QTest::addColumn<QStringList>("kept");
        QTest::newRow("all four types in drop order, a text file left out")
            << QStringList{"/u/d.ppp", "/u/c.plugin", "/u/notes.txt", "/u/b.bundle", "/u/a.kext"}
            << QStringList{"/u/d.ppp", "/u/c.plugin", "/u/b.bundle", "/u/a.kext"};
        QTest::newRow("upper-case extension is not taken")
            << QStringList{"/u/Driver.KEXT", "/u/X.Kext"} << QStringList{};
        QTest::newRow("only the last extension counts")
            << QStringList{"/u/A.kext.zip", "/u/B.zip.kext"} << QStringList{"/u/B.zip.kext"};
        QTest::newRow("the type without a name, or only in a folder above")
            << QStringList{"/u/kext", "/u/.kext", "/u/x.kext/Contents"} << QStringList{};
        QTest::newRow("trailing slash of a bundle folder and duplicates kept as delivered")
            << QStringList{"/u/A.kext/", "/u/A.kext/"} << QStringList{"/u/A.kext/", "/u/A.kext/"};
    }
    void dropFilter() {
        QFETCH(QStringList, dropped);
        QFETCH(QStringList, kept);
        QCOMPARE(InstallList::dropFilter(dropped), kept);
    }
    void bundleNameDropsFoldersAndTrailingSlashes() {
        QCOMPARE(InstallList::bundleName(QStringLiteral("/u/A.kext//")), QStringLiteral("A.kext"));
        QCOMPARE(InstallList::bundleName(QStringLiteral("A.kext")), QStringLiteral("A.kext"));
    }

    void dropAppendsAtEndUnlessInstalling() {
        bool installing = true;
        InstallList list;
        list.setBusyCheck([&] { return installing; });
        list.append({QStringLiteral("/u/First.kext"), QStringLiteral("/u/Second.kext")});
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile("/u/New.kext"), QUrl::fromLocalFile("/u/readme.txt")});
        QVERIFY(!list.canDropMimeData(&data, Qt::CopyAction, 0, 0, {}));
        QVERIFY(!list.dropMimeData(&data, Qt::CopyAction, 0, 0, list.index(0)));
        QCOMPARE(list.rowCount(), 2);

        installing = false;
        QVERIFY(list.canDropMimeData(&data, Qt::CopyAction, 0, 0, {}));
        QVERIFY(list.dropMimeData(&data, Qt::CopyAction, 0, 0, list.index(0)));
        QCOMPARE(list.entries(), (QStringList{"/u/First.kext", "/u/Second.kext", "/u/New.kext"}));

        // Something that is no list of files is not even offered a copy.
        QMimeData plain;
        plain.setText(QStringLiteral("/u/A.kext"));
        QVERIFY(!list.canDropMimeData(&plain, Qt::CopyAction, -1, -1, {}));
    }
};

QTEST_GUILESS_MAIN(TestInstall)
#include "tst_install.moc"

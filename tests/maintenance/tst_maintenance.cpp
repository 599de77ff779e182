#include "CliRun.h"
#include "EndText.h"
#include "RecordingExecutor.h"
#include "TestScripts.h"
#include "TestServices.h"
#include "exec/Command.h"
#include "maintenance/ExtraFolderOperations.h"
#include "maintenance/ExtraFolderView.h"
#include "maintenance/MaintenancePlan.h"
#include "maintenance/MaintenanceView.h"
#include "maintenance/MkextRebuild.h"
#include "volumes/SystemPaths.h"

#include <QTemporaryDir>
#include <QTest>

// How an Extra menu command ends: Yes if asked, No, no password, or its folder missing.
enum class Outcome { Done, Declined, Refused, Missing };
Q_DECLARE_METATYPE(Outcome)

namespace {

// A system root in a temporary folder with one volume below its Volumes folder. The
// volume's name has a blank, an apostrophe and non-ASCII letters so that every command
// proves it passes paths as single arguments.
struct Sandbox {
    static inline const QString volume = QStringLiteral("Mac HD's Düsk");
    QTemporaryDir dir;
    TestServices test{paths()};

    Sandbox() {
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
};

// The page and the root commands in one list, so the status line is seen to change
// before the commands of its step.
class Recorder final : public MaintenanceView, public Executor {
public:
    QStringList log;
    QList<Command> commands;
    bool grant = true;
    int authorizeCalls = 0;
    QString failing; // commands of this tool end with exit status 1

    bool authorize() override {
        ++authorizeCalls;
        return grant;
    }
    CommandResult run(const Command &command) override {
        commands << command;
        const QString tool = QFileInfo(command.tool).fileName();
        log << "run " + tool + ' ' + command.args.join(' ');
        if (tool == failing)
            return {true, 1, tool + ": Operation not permitted\n"};
        return {};
    }
    bool simulated() const override { return true; }
    void commandsFailed(const QStringList &lines) override {
        log << "failed " + QString::number(lines.size());
    }
    void rootPathChosen(const QString &rootPath) override { log << "rp " + rootPath; }
    void setControlsEnabled(bool on) override { log << (on ? "controls on" : "controls off"); }
    void setWorking(bool on) override { log << (on ? "working on" : "working off"); }
    void setSpinning(bool on) override { log << (on ? "spinner on" : "spinner off"); }
    void setStatus(const QString &text) override { log << "status " + text; }
    void reevaluateVolume() override { log << "reevaluate"; }
};

// Words separated by blanks: the boxes "erp", "erm", "slerp" and "slerc" (a trailing
// "~" puts one in the mixed state), "prelink", "lion", and an Extra version like "10.6".
MaintenanceOptions boxes(const QString &which) {
    MaintenanceOptions options;
    options.volume = Sandbox::volume;
    const QStringList words = which.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    const auto state = [&words](const char *name) {
        if (words.contains(QLatin1String(name) + QLatin1Char('~')))
            return Qt::PartiallyChecked;
        return words.contains(QLatin1String(name)) ? Qt::Checked : Qt::Unchecked;
    };
    options.repairExtra = state("erp");
    options.rebuildExtraMkext = state("erm");
    options.repairSle = state("slerp");
    options.rebuildCaches = state("slerc");
    options.prelinkKernel = words.contains(QLatin1String("prelink"));
    options.recreateLionCache = words.contains(QLatin1String("lion"));
    for (const QString &word : words)
        if (word.startsWith(QLatin1String("10.")))
            options.extraVersion = word;
    return options;
}

// Expected commands as Sandbox::commands reads them.
const auto own = [](const QString &folder) { return "/usr/sbin/chown|-R|0:0|R/" + folder; };
const auto mode = [](const QString &folder) { return "/bin/chmod|-R|755|R/" + folder; };
const auto touch = [](const QString &folder) { return "/usr/bin/touch|R/" + folder; };
const auto mkext = [](const QString &archive, const QString &folder) {
    return "/usr/sbin/kextcache|-v|1|-a|i386|-a|x86_64|-m|R/" + archive + "|R/" + folder;
};
const QString ext = "Extra/Extensions";
const QString store = "Extra/KextStore";
const QString sle = "System/Library/Extensions";
const QString touchSle = touch(sle);
const QString lionMkext =
    mkext("System/Library/Caches/com.apple.kext.caches/Startup/Extensions.mkext", sle);

class RecordingView final : public ExtraFolderView {
public:
    QString volume = Sandbox::volume;
    QStringList roots;
    QStringList questions;
    std::function<void(int)> pendingAnswer;
    int reevaluations = 0;

    QString selectedVolume() const override { return volume; }
    void rootPathChosen(const QString &rootPath) override { roots << rootPath; }
    void askToContinue(const QString &text, std::function<void(int)> answered) override {
        questions << text;
        pendingAnswer = std::move(answered);
    }
    // Which commands failed is the maintenance plan's rows' to show.
    void commandsFailed(const QStringList &) override {}
    void reevaluateVolume() override { ++reevaluations; }
};

const QString bringBackQuestion =
    "Do you want to bring back Extra/Extensions from Extra/KextStore on selected disk?";
const QString createQuestion =
    "Do you want to create Extra/KextStore from Extra/Extensions on selected disk?\n"
    "Mkext will be created, it can take a while.";

// One Extra menu over a fresh sandbox with the given folders.
struct Menu {
    explicit Menu(const QStringList &folders, bool grant = true) {
        box.makeFolders(folders);
        executor.grant = grant;
    }
    Sandbox box;
    RecordingView view;
    RecordingExecutor executor;
    ExtraFolderOperations ops{box.paths(), executor, view};
};

std::optional<TaskResult> start(ExtraFolderOperations &ops, const QString &command) {
    if (command == "bring back")
        return ops.restoreExtensionsFolder();
    if (command == "create")
        return ops.createKextStore();
    if (command == "hide")
        return ops.hideExtraFolder();
    return ops.showExtraFolder();
}

} // namespace

// The maintenance job and the Extra menu's four commands on real folder trees: which
// root commands they run in which order, what the job shows while doing so, and the
// menu's question, its answers and its error alerts.
class TestMaintenance : public QObject {
    Q_OBJECT
private slots:
    void commands_data() {
        QTest::addColumn<QString>("options");
        QTest::addColumn<QStringList>("folders");
        QTest::addColumn<QString>("productVersion"); // empty: no version file
        QTest::addColumn<bool>("startedSystem");
        QTest::addColumn<QStringList>("expected");

        const QStringList both{ext, store, sle};
        // All four on the started system with Extensions alone run end to end; one list
        // per step.
        QTest::newRow("all four boxes, both folders, Lion, started system")
            << "erp erm slerp slerc prelink lion" << both << "10.7.2" << true
            << QStringList{own(ext), mode(ext), own(store), mode(store)} +
                   QStringList{mkext(ext + ".mkext", store), touch(ext),
                               mkext(ext + ".mkext", ext)} +
                   QStringList{own(sle), mode(sle), "/usr/sbin/diskutil|repairpermissions|R/"} +
                   QStringList{touchSle, lionMkext, "/usr/sbin/kextcache|-system-caches",
                               "/usr/sbin/kextcache|-system-prelinked-kernel"};

        const QString v = "Extra/10.6/Extensions";
        QTest::newRow("version folder 10.6 leaves plain Extra alone")
            << "erp erm 10.6" << QStringList{ext, store, v} << "" << false
            << QStringList{own(v), mode(v), touch(v), mkext(v + ".mkext", v)};
        QTest::newRow("KextStore alone: no touch, built from KextStore")
            << "erp erm" << QStringList{store} << "" << false
            << QStringList{own(store), mode(store), mkext(ext + ".mkext", store)};

        // Prelink Kernel off on the started system runs end to end.
        QTest::newRow("other volume with prelink: no system-wide caches; 10.7 without the Lion key")
            << "slerc prelink" << both << "10.7.5" << false << QStringList{touchSle};
        QTest::newRow("10.7 with the Lion key")
            << "slerc lion" << both << "10.7" << false << QStringList{touchSle, lionMkext};
        QTest::newRow("10.10 is not Lion")
            << "slerc lion" << both << "10.10.5" << false << QStringList{touchSle};
        QTest::newRow("no version file")
            << "slerc lion" << both << "" << false << QStringList{touchSle};

        QTest::newRow("mixed boxes pass the check but run nothing")
            << "erp~ erm~ slerp~ slerc~" << both << "" << false << QStringList{};
    }
    void commands() {
        QFETCH(QString, options);
        QFETCH(QStringList, folders);
        QFETCH(QString, productVersion);
        QFETCH(bool, startedSystem);
        QFETCH(QStringList, expected);

        Sandbox box;
        box.makeFolders(folders);
        if (!productVersion.isEmpty())
            QVERIFY(writePlist(box.rootPath() + "System/Library/CoreServices/SystemVersion.plist",
                               "<key>ProductVersion</key><string>" + productVersion.toUtf8() +
                                   "</string>"));
        Recorder r;
        QStringList asked;
        box.test.services.setStartedSystemCheck([&](const QString &path) {
            asked << path;
            return startedSystem;
        });
        MaintenancePlan plan(boxes(options), box.test.services, r, r);

        QVERIFY(!plan.prepare());
        QCOMPARE(endText(plan.run()), QStringList{"info Selected tasks were finished."});
        QCOMPARE(r.commands, box.commands(expected));
        // The started system is asked about with the task's root, slash and all.
        for (const QString &path : asked)
            QCOMPARE(path, box.rootPath());
    }

    void effects_data() {
        QTest::addColumn<QString>("boxes");
        QTest::addColumn<QStringList>("folders");
        QTest::addColumn<QString>("failing");      // the tool whose commands fail
        QTest::addColumn<QStringList>("expected"); // "R/" stands for the volume root
        const QStringList start{"rp R/", "controls off", "working on", "spinner on",
                                "status Repairing Extra permissions..."};
        const QStringList end{"controls on", "working off", "spinner off", "status ", "reevaluate"};
        const QStringList commands{"run chown -R 0:0 R/Extra/KextStore",
                                   "run chmod -R 755 R/Extra/KextStore",
                                   "status Repairing S/L/E permissions...",
                                   "run chown -R 0:0 R/System/Library/Extensions",
                                   "run chmod -R 755 R/System/Library/Extensions",
                                   "status Repairing disk permissions...",
                                   "run diskutil repairpermissions R/"};
        const QStringList folders{"Extra/KextStore", "System/Library/Extensions"};
        QTest::newRow("finished") << "erp slerp" << folders << QString()
                                  << start + commands + end +
                                         QStringList{"info Selected tasks were finished."};
        // Failed commands change nothing of the run; they are told before its closing text.
        QTest::newRow("two commands failed")
            << "erp slerp" << folders << "chmod"
            << start + commands + end +
                   QStringList{"failed 2", "info Selected tasks were finished."};
        // Step one has nothing to repair; the later tasks are skipped even though ticked.
        QTest::newRow("no kext folders to build from")
            << "erp erm slerp slerc" << QStringList{"Extra/Themes", "System/Library/Extensions"}
            << QString()
            << start + QStringList{"status Rebuilding Extra mkext..."} + end +
                   QStringList{"error No Extra/Extensions or Extra/KextStore found."};
    }
    void effects() {
        QFETCH(QString, boxes);
        QFETCH(QStringList, folders);
        QFETCH(QString, failing);
        QFETCH(QStringList, expected);
        Sandbox box;
        box.makeFolders(folders);
        Recorder r;
        r.failing = failing;
        box.test.services.setStartedSystemCheck([](const QString &) { return true; });
        MaintenancePlan plan(::boxes(boxes), box.test.services, r, r);

        QVERIFY(!plan.prepare());
        QVERIFY(r.log.isEmpty()); // the job changes the controls itself
        r.log << endText(plan.run());
        QCOMPARE(r.log, expected.replaceInStrings("R/", box.rootPath()));
    }

    void prepareStopsWithoutTaskOrPassword() {
        Sandbox box;
        Recorder r;
        r.log << endText(MaintenancePlan(boxes(""), box.test.services, r, r).prepare().value());
        QCOMPARE(r.authorizeCalls, 0);
        QCOMPARE(r.log, (QStringList{"spinner off", "error You haven't selected any options."}));

        // A refused password ends it silently.
        r.grant = false;
        r.log.clear();
        QCOMPARE(MaintenancePlan(boxes("erp erm slerp slerc"), box.test.services, r, r).prepare(),
                 std::optional(TaskResult::failed()));
        QCOMPARE(r.authorizeCalls, 1);
        QVERIFY(r.log.isEmpty());
    }

    void builtinMkextWithoutKextcache() {
        Sandbox box;
        QVERIFY(QFile::remove(box.dir.path() + "/usr/sbin/kextcache"));
        box.makeFolders({"Extra/KextStore"});
        setKextkeeperExecutable("/opt/kk/kextkeeper");
        Recorder rec;
        MaintenancePlan(boxes("erm"), box.test.services, rec, rec).run();
        setKextkeeperExecutable(QString());
        const QString r = box.rootPath();
        QCOMPARE(rec.commands,
                 (QList<Command>{{"/opt/kk/kextkeeper",
                                  {"mkext", "build", r + "Extra/Extensions.mkext",
                                   r + "Extra/KextStore", "--arch", "i386", "--arch", "x86_64"},
                                  true}}));
    }

    void outcomes_data() {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QStringList>("folders");
        // Done: answered Yes if asked; Declined: answered No; Refused: no password given.
        QTest::addColumn<Outcome>("outcome");
        QTest::addColumn<QString>("error");
        QTest::addColumn<QStringList>("expected");

        const QString rmMkext = "/bin/rm|-R|R/Extra/Extensions.mkext";
        const QString mvBack = "/bin/mv|R/Extra/KextStore|R/Extra/Extensions";
        const QString mvCreate = "/bin/mv|R/Extra/Extensions|R/Extra/KextStore";
        const QString build = "/usr/sbin/kextcache|-v|1|-a|i386|-a|x86_64|-m|R/Extra/"
                              "Extensions.mkext|R/Extra/KextStore";
        const QStringList all{"Extra/Extensions", "Extra/KextStore", "Extra/Extensions.mkext"};
        const QStringList none;

        QTest::newRow("bring back with an mkext")
            << "bring back" << QStringList{"Extra/KextStore", "Extra/Extensions.mkext"}
            << Outcome::Done << "" << QStringList{rmMkext, mvBack};
        QTest::newRow("bring back without an mkext")
            << "bring back" << QStringList{"Extra/KextStore"} << Outcome::Done << ""
            << QStringList{mvBack};
        // mv does not look whether the target is there already: that is what the user asked.
        QTest::newRow("create") << "create" << QStringList{"Extra/Extensions", "Extra/KextStore"}
                                << Outcome::Done << "" << QStringList{mvCreate, build};
        // An Extra folder without kexts is still hidden or shown.
        QTest::newRow("hide") << "hide" << QStringList{"Extra"} << Outcome::Done << ""
                              << QStringList{"/usr/bin/chflags|hidden|R/Extra"};
        QTest::newRow("show") << "show" << QStringList{"Extra"} << Outcome::Done << ""
                              << QStringList{"/usr/bin/chflags|nohidden|R/Extra"};
        // Only Yes runs anything (the window's rows answer create with No and Escape).
        QTest::newRow("bring back, No") << "bring back" << all << Outcome::Declined << "" << none;
        // A missing folder is told before any question or password.
        QTest::newRow("bring back without KextStore")
            << "bring back" << QStringList{"Extra/Extensions", "Extra/10.6/KextStore"}
            << Outcome::Missing << "No Extra/KextStore found." << none;
        QTest::newRow("create without Extensions")
            << "create" << QStringList{"Extra/KextStore", "Extra/10.6/Extensions"}
            << Outcome::Missing << "No Extra/Extensions found." << none;
        QTest::newRow("hide without Extra")
            << "hide" << QStringList{"System/Library"} << Outcome::Missing
            << "No Extra folder on selected disk." << none;
        // A refused password ends it silently.
        QTest::newRow("bring back, refused")
            << "bring back" << all << Outcome::Refused << "" << none;
        QTest::newRow("create, refused") << "create" << all << Outcome::Refused << "" << none;
        QTest::newRow("show, refused") << "show" << all << Outcome::Refused << "" << none;
    }
    void outcomes() {
        QFETCH(QString, command);
        QFETCH(QStringList, folders);
        QFETCH(Outcome, outcome);
        QFETCH(QString, error);
        QFETCH(QStringList, expected);
        Menu m(folders, outcome != Outcome::Refused);
        const QString question = command == "bring back" ? bringBackQuestion
                                 : command == "create"   ? createQuestion
                                                         : QString();
        const bool asks = !question.isEmpty() && outcome != Outcome::Missing;

        const std::optional<TaskResult> first = start(m.ops, command);
        QCOMPARE(m.view.questions, asks ? QStringList{question} : QStringList{});
        if (asks) {
            QVERIFY(!first);
            // Nothing happens while the question is open.
            QCOMPARE(m.executor.authorizeCalls, 0);
            QVERIFY(m.executor.commands.isEmpty());
            m.view.pendingAnswer(outcome == Outcome::Declined ? ExtraFolderView::noCode
                                                              : ExtraFolderView::yesCode);
        }
        // Only a missing folder is told; the rest end without a word.
        const bool failed = outcome == Outcome::Missing || outcome == Outcome::Refused;
        QCOMPARE(asks ? m.ops.lastAnswer() : first.value(), (TaskResult{!failed, error, {}, {}}));
        const bool passwordAsked = outcome == Outcome::Done || outcome == Outcome::Refused;
        QCOMPARE(m.executor.authorizeCalls, passwordAsked ? 1 : 0);
        QCOMPARE(m.executor.commands, m.box.commands(expected));
        // Only a conversion changes what the option boxes depend on; its root is chosen
        // again once answered.
        const bool converted = asks && outcome == Outcome::Done;
        QCOMPARE(m.view.reevaluations, converted ? 1 : 0);
        if (outcome == Outcome::Done)
            QCOMPARE(m.view.roots, QStringList(converted ? 2 : 1, m.box.rootPath()));
    }

    void answerUsesTheVolumeChosenNow() {
        Menu m({"Extra/KextStore"});
        const QString other = m.box.dir.path() + "/Volumes/Other/";

        QVERIFY(!m.ops.restoreExtensionsFolder());
        m.view.volume = "Other"; // picked while the sheet was open: no KextStore there at all
        m.view.pendingAnswer(ExtraFolderView::yesCode);
        QCOMPARE(m.view.roots, (QStringList{m.box.rootPath(), other}));
        QCOMPARE(m.executor.commands,
                 (QList<Command>{{m.box.dir.path() + "/bin/mv",
                                  {other + "Extra/KextStore", other + "Extra/Extensions"},
                                  true}}));
    }
};

QTEST_GUILESS_MAIN(TestMaintenance)
#include "tst_maintenance.moc"

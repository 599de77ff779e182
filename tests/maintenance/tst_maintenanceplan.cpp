#include "MaintenanceSandbox.h"
#include "RecordingExecutor.h"
#include "maintenance/MaintenancePlan.h"
#include "maintenance/MaintenanceView.h"
#include "maintenance/MkextRebuild.h"

// The maintenance job on real folder trees: which root commands it runs in which order,
// and what it shows while doing so.
class TestMaintenancePlan : public QObject {
    Q_OBJECT
private slots:
    void commands_data();
    void commands();
    void effects_data();
    void effects();
    void prepare_data();
    void prepare();
    void builtinMkextWithoutKextcache();
};

namespace {

// Effects and commands in one list, so the status line is seen to change before the
// commands of its step.
class RecordingView final : public MaintenanceView {
public:
    explicit RecordingView(QStringList &log) : m_log(log) {}
    void rootPathChosen(const QString &rootPath) override { m_log << "rp " + rootPath; }
    void setControlsEnabled(bool enabled) override {
        m_log << (enabled ? "controls on" : "controls off");
    }
    void setWorking(bool working) override { m_log << (working ? "working on" : "working off"); }
    void setSpinning(bool spinning) override { m_log << (spinning ? "spinner on" : "spinner off"); }
    void setStatus(const QString &text) override { m_log << "status " + text; }
    void reevaluateVolume() override { m_log << "reevaluate"; }
    void showError(const QString &message) override { m_log << "error " + message; }
    void showInfo(const QString &message) override { m_log << "info " + message; }

private:
    QStringList &m_log;
};

class LoggingExecutor final : public Executor {
public:
    explicit LoggingExecutor(QStringList &log) : m_log(log) {}
    bool authorize() override { return true; }
    void run(const Command &command) override {
        m_log << "run " + QFileInfo(command.tool).fileName() + ' ' + command.args.join(' ');
    }

private:
    QStringList &m_log;
};

MaintenanceOptions boxes(const QString &which) {
    MaintenanceOptions options;
    options.volume = MaintenanceSandbox::volume;
    // Box names separated by blanks; a trailing "~" puts the box in the mixed state.
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
    return options;
}

// Expected commands as MaintenanceSandbox::commands reads them.
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
const QString repairDisk = "/usr/sbin/diskutil|repairpermissions|R/";
const QString systemCaches = "/usr/sbin/kextcache|-system-caches";
const QString prelinked = "/usr/sbin/kextcache|-system-prelinked-kernel";
const QString lionMkext =
    mkext("System/Library/Caches/com.apple.kext.caches/Startup/Extensions.mkext", sle);

} // namespace

void TestMaintenancePlan::commands_data() {
    QTest::addColumn<MaintenanceOptions>("options");
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<QString>("productVersion"); // empty: no version file
    QTest::addColumn<bool>("startedSystem");
    QTest::addColumn<QStringList>("expected");

    const QStringList both{ext, store, sle};
    MaintenanceOptions all = boxes("erp erm slerp slerc");
    all.prelinkKernel = all.recreateLionCache = true;
    // All four on the started system with Extensions alone run end to end. One list per step.
    QTest::newRow("all four boxes, both folders, Lion, started system")
        << all << both << "10.7.2" << true
        << QStringList{own(ext), mode(ext), own(store), mode(store)} +
               QStringList{mkext(ext + ".mkext", store), touch(ext), mkext(ext + ".mkext", ext)} +
               QStringList{own(sle), mode(sle), repairDisk} +
               QStringList{touchSle, lionMkext, systemCaches, prelinked};

    MaintenanceOptions v106 = boxes("erp erm");
    v106.extraVersion = "10.6";
    const QString v = "Extra/10.6/Extensions";
    QTest::newRow("version folder 10.6 leaves plain Extra alone")
        << v106 << QStringList{ext, store, v} << "" << false
        << QStringList{own(v), mode(v), touch(v), mkext(v + ".mkext", v)};

    QTest::newRow("KextStore alone: no touch, built from KextStore")
        << boxes("erp erm") << QStringList{store} << "" << false
        << QStringList{own(store), mode(store), mkext(ext + ".mkext", store)};

    QTest::newRow("Extra repair without kext folders runs nothing")
        << boxes("erp") << QStringList{"Extra"} << "" << false << QStringList{};

    MaintenanceOptions notStarted = boxes("slerc");
    notStarted.prelinkKernel = true;
    // Prelink Kernel off on the started system runs end to end.
    QTest::newRow("other volume: no system-wide caches")
        << notStarted << both << "10.6.8" << false << QStringList{touchSle};

    MaintenanceOptions lion = boxes("slerc");
    lion.recreateLionCache = true;
    QTest::newRow("10.7 with the Lion key")
        << lion << both << "10.7" << false << QStringList{touchSle, lionMkext};
    QTest::newRow("10.6 with the Lion key")
        << lion << both << "10.6.8" << false << QStringList{touchSle};
    QTest::newRow("10.10 is not Lion")
        << lion << both << "10.10.5" << false << QStringList{touchSle};
    QTest::newRow("no version file") << lion << both << "" << false << QStringList{touchSle};
    QTest::newRow("10.7 without the Lion key")
        << boxes("slerc") << both << "10.7.5" << false << QStringList{touchSle};

    QTest::newRow("mixed boxes pass the check but run nothing")
        << boxes("erp~ erm~ slerp~ slerc") << both << "" << false << QStringList{touchSle};
}

void TestMaintenancePlan::commands() {
    QFETCH(MaintenanceOptions, options);
    QFETCH(QStringList, folders);
    QFETCH(QString, productVersion);
    QFETCH(bool, startedSystem);
    QFETCH(QStringList, expected);

    MaintenanceSandbox box;
    box.makeFolders(folders);
    if (!productVersion.isEmpty())
        box.writeProductVersion(productVersion);
    QStringList log;
    RecordingView view(log);
    RecordingExecutor executor;
    MaintenancePlan plan(options, box.paths(), executor, view);
    QStringList asked;
    plan.setIsRoot([&](const QString &path) {
        asked << path;
        return startedSystem;
    });

    QVERIFY(plan.prepare());
    plan.run();
    QCOMPARE(executor.commands, box.commands(expected));
    QCOMPARE(log.last(), "info Selected tasks were finished.");
    // The started system is asked about with the task's root, slash and all.
    for (const QString &path : asked)
        QCOMPARE(path, box.rootPath());
}

void TestMaintenancePlan::effects_data() {
    QTest::addColumn<QString>("boxes");
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<QStringList>("expected"); // "R/" stands for the volume root
    const QStringList start{"rp R/", "controls off", "working on", "spinner on",
                            "status Repairing Extra permissions..."};
    const QStringList end{"controls on", "working off", "spinner off", "status ", "reevaluate"};
    QTest::newRow("finished") << "erp slerp"
                              << QStringList{"Extra/KextStore", "System/Library/Extensions"}
                              << start +
                                     QStringList{"run chown -R 0:0 R/Extra/KextStore",
                                                 "run chmod -R 755 R/Extra/KextStore",
                                                 "status Repairing S/L/E permissions...",
                                                 "run chown -R 0:0 R/System/Library/Extensions",
                                                 "run chmod -R 755 R/System/Library/Extensions",
                                                 "status Repairing disk permissions...",
                                                 "run diskutil repairpermissions R/"} +
                                     end + QStringList{"info Selected tasks were finished."};
    // Step one has nothing to repair; the later tasks are skipped even though ticked.
    QTest::newRow("no kext folders to build from")
        << "erp erm slerp slerc" << QStringList{"Extra/Themes", "System/Library/Extensions"}
        << start + QStringList{"status Rebuilding Extra mkext..."} + end +
               QStringList{"error No Extra/Extensions or Extra/KextStore found."};
}

void TestMaintenancePlan::effects() {
    QFETCH(QString, boxes);
    QFETCH(QStringList, folders);
    QFETCH(QStringList, expected);
    MaintenanceSandbox box;
    box.makeFolders(folders);
    QStringList log;
    RecordingView view(log);
    LoggingExecutor executor(log);
    MaintenancePlan plan(::boxes(boxes), box.paths(), executor, view);
    plan.setIsRoot([](const QString &) { return true; });

    QVERIFY(plan.prepare());
    QVERIFY(log.isEmpty()); // the job changes the controls itself
    plan.run();
    QCOMPARE(log, expected.replaceInStrings("R/", box.rootPath()));
}

void TestMaintenancePlan::prepare_data() {
    QTest::addColumn<QString>("boxes");
    QTest::addColumn<bool>("grant");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<QStringList>("shown");
    QTest::newRow("none") << "" << true << false
                          << QStringList{"spinner off", "error You haven't selected any options."};
    QTest::newRow("one mixed") << "erm~" << true << true << QStringList{};
    QTest::newRow("refused authorization shows nothing")
        << "erp erm slerp slerc" << false << false << QStringList{};
}

void TestMaintenancePlan::prepare() {
    QFETCH(QString, boxes);
    QFETCH(bool, grant);
    QFETCH(bool, accepted);
    QFETCH(QStringList, shown);
    MaintenanceSandbox box;
    QStringList log;
    RecordingView view(log);
    RecordingExecutor executor;
    executor.grant = grant;
    MaintenancePlan plan(::boxes(boxes), box.paths(), executor, view);

    QCOMPARE(plan.prepare(), accepted);
    QCOMPARE(executor.authorizeCalls, boxes.isEmpty() ? 0 : 1);
    QCOMPARE(log, shown);
    QVERIFY(executor.commands.isEmpty());
}

void TestMaintenancePlan::builtinMkextWithoutKextcache() {
    MaintenanceSandbox box;
    QVERIFY(QFile::remove(box.dir.path() + "/usr/sbin/kextcache"));
    box.makeFolders({"Extra/KextStore"});
    setKextkeeperExecutable("/opt/kk/kextkeeper");
    QStringList log;
    RecordingView view(log);
    RecordingExecutor executor;
    MaintenancePlan plan(boxes("erm"), box.paths(), executor, view);
    plan.run();
    setKextkeeperExecutable(QString());
    const QString r = box.rootPath();
    QCOMPARE(executor.commands,
             (QList<Command>{{"/opt/kk/kextkeeper",
                              {"mkext", "build", r + "Extra/Extensions.mkext",
                               r + "Extra/KextStore", "--arch", "i386", "--arch", "x86_64"},
                              true}}));
}

QTEST_GUILESS_MAIN(TestMaintenancePlan)
#include "tst_maintenanceplan.moc"

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
    void effectsOfARun();
    void abortWithoutKextFolders();
    void prepare_data();
    void prepare();
    void builtinMkextWithoutKextcache();
};

namespace {

// Effects and commands in one list, so the status line is seen to change before the
// commands of its step.
struct Log {
    QStringList lines;
};

class RecordingView final : public MaintenanceView {
public:
    explicit RecordingView(Log &log) : m_log(log) {}
    void rootPathChosen(const QString &rootPath) override { m_log.lines << "rp " + rootPath; }
    void setControlsEnabled(bool enabled) override {
        m_log.lines << (enabled ? "controls on" : "controls off");
    }
    void setWorking(bool working) override {
        m_log.lines << (working ? "working on" : "working off");
    }
    void setSpinning(bool spinning) override {
        m_log.lines << (spinning ? "spinner on" : "spinner off");
    }
    void setStatus(const QString &text) override { m_log.lines << "status " + text; }
    void reevaluateVolume() override { m_log.lines << "reevaluate"; }
    void showError(const QString &message) override { m_log.lines << "error " + message; }
    void showInfo(const QString &message) override { m_log.lines << "info " + message; }

private:
    Log &m_log;
};

class LoggingExecutor final : public Executor {
public:
    explicit LoggingExecutor(Log &log) : m_log(log) {}
    bool authorize() override { return true; }
    void run(const Command &command) override {
        m_log.lines << "run " + QFileInfo(command.tool).fileName() + ' ' +
                           command.args.join(QLatin1Char(' '));
    }

private:
    Log &m_log;
};

MaintenanceOptions allBoxes() {
    MaintenanceOptions options;
    options.volume = MaintenanceSandbox::volume;
    options.repairExtra = options.rebuildExtraMkext = Qt::Checked;
    options.repairSle = options.rebuildCaches = Qt::Checked;
    return options;
}

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

const QString chownExt = "/usr/sbin/chown|-R|0:0|R/Extra/Extensions";
const QString chmodExt = "/bin/chmod|-R|755|R/Extra/Extensions";
const QString chownStore = "/usr/sbin/chown|-R|0:0|R/Extra/KextStore";
const QString chmodStore = "/bin/chmod|-R|755|R/Extra/KextStore";
const QString mkextFromStore =
    "/usr/sbin/kextcache|-v|1|-a|i386|-a|x86_64|-m|R/Extra/Extensions.mkext|R/Extra/KextStore";
const QString touchExt = "/usr/bin/touch|R/Extra/Extensions";
const QString mkextFromExt =
    "/usr/sbin/kextcache|-v|1|-a|i386|-a|x86_64|-m|R/Extra/Extensions.mkext|R/Extra/Extensions";
const QString chownSle = "/usr/sbin/chown|-R|0:0|R/System/Library/Extensions";
const QString chmodSle = "/bin/chmod|-R|755|R/System/Library/Extensions";
const QString repairDisk = "/usr/sbin/diskutil|repairpermissions|R/";
const QString touchSle = "/usr/bin/touch|R/System/Library/Extensions";
const QString lionMkext = "/usr/sbin/kextcache|-v|1|-a|i386|-a|x86_64|-m|"
                          "R/System/Library/Caches/com.apple.kext.caches/Startup/Extensions.mkext|"
                          "R/System/Library/Extensions";
const QString systemCaches = "/usr/sbin/kextcache|-system-caches";
const QString prelinked = "/usr/sbin/kextcache|-system-prelinked-kernel";

} // namespace

void TestMaintenancePlan::commands_data() {
    QTest::addColumn<MaintenanceOptions>("options");
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<QString>("productVersion"); // empty: no version file
    QTest::addColumn<bool>("startedSystem");
    QTest::addColumn<QStringList>("expected");

    const QStringList both{"Extra/Extensions", "Extra/KextStore", "System/Library/Extensions"};
    MaintenanceOptions all = allBoxes();
    all.prelinkKernel = all.recreateLionCache = true;
    QTest::newRow("all four boxes, both folders, Lion, started system")
        << all << both << "10.7.2" << true
        << QStringList{chownExt, chmodExt,     chownStore,   chmodStore, mkextFromStore,
                       touchExt, mkextFromExt, chownSle,     chmodSle,   repairDisk,
                       touchSle, lionMkext,    systemCaches, prelinked};

    MaintenanceOptions v106 = boxes("erp erm");
    v106.extraVersion = "10.6";
    QTest::newRow("version folder 10.6 leaves plain Extra alone")
        << v106 << QStringList{"Extra/Extensions", "Extra/KextStore", "Extra/10.6/Extensions"} << ""
        << false
        << QStringList{"/usr/sbin/chown|-R|0:0|R/Extra/10.6/Extensions",
                       "/bin/chmod|-R|755|R/Extra/10.6/Extensions",
                       "/usr/bin/touch|R/Extra/10.6/Extensions",
                       "/usr/sbin/kextcache|-v|1|-a|i386|-a|x86_64|-m|"
                       "R/Extra/10.6/Extensions.mkext|R/Extra/10.6/Extensions"};

    QTest::newRow("KextStore alone: no touch, built from KextStore")
        << boxes("erp erm") << QStringList{"Extra/KextStore"} << "" << false
        << QStringList{chownStore, chmodStore, mkextFromStore};

    QTest::newRow("Extra repair without kext folders runs nothing")
        << boxes("erp") << QStringList{"Extra"} << "" << false << QStringList{};

    QTest::newRow("S/L/E repair ends with the disk")
        << boxes("slerp") << both << "" << true << QStringList{chownSle, chmodSle, repairDisk};

    MaintenanceOptions notStarted = boxes("slerc");
    notStarted.prelinkKernel = true;
    QTest::newRow("other volume: no system-wide caches")
        << notStarted << both << "10.6.8" << false << QStringList{touchSle};

    MaintenanceOptions noPrelink = boxes("slerc");
    QTest::newRow("started system, Prelink Kernel off")
        << noPrelink << both << "10.6.8" << true << QStringList{touchSle};

    MaintenanceOptions prelink = boxes("slerc");
    prelink.prelinkKernel = true;
    QTest::newRow("started system, Prelink Kernel on")
        << prelink << both << "10.6.8" << true << QStringList{touchSle, systemCaches, prelinked};

    MaintenanceOptions lion = boxes("slerc");
    lion.recreateLionCache = true;
    QTest::newRow("10.7 with the Lion key")
        << lion << both << "10.7" << false << QStringList{touchSle, lionMkext};
    QTest::newRow("10.6 with the Lion key")
        << lion << both << "10.6.8" << false << QStringList{touchSle};
    QTest::newRow("10.10 is not Lion")
        << lion << both << "10.10.5" << false << QStringList{touchSle};
    QTest::newRow("version too short") << lion << both << "10." << false << QStringList{touchSle};
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
    Log log;
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
    QCOMPARE(log.lines.last(), "info Selected tasks were finished.");
    // The started system is asked about with the task's root, slash and all.
    for (const QString &path : asked)
        QCOMPARE(path, box.rootPath());
}

void TestMaintenancePlan::effectsOfARun() {
    MaintenanceSandbox box;
    box.makeFolders({"Extra/KextStore", "System/Library/Extensions"});
    Log log;
    RecordingView view(log);
    LoggingExecutor executor(log);
    MaintenancePlan plan(boxes("erp slerp"), box.paths(), executor, view);
    plan.setIsRoot([](const QString &) { return false; });

    QVERIFY(plan.prepare());
    QVERIFY(log.lines.isEmpty()); // the job changes the controls itself
    plan.run();
    const QString r = box.rootPath();
    QCOMPARE(log.lines, (QStringList{"rp " + r, "controls off", "working on", "spinner on",
                                     "status Repairing Extra permissions...",
                                     "run chown -R 0:0 " + r + "Extra/KextStore",
                                     "run chmod -R 755 " + r + "Extra/KextStore",
                                     "status Repairing S/L/E permissions...",
                                     "run chown -R 0:0 " + r + "System/Library/Extensions",
                                     "run chmod -R 755 " + r + "System/Library/Extensions",
                                     "status Repairing disk permissions...",
                                     "run diskutil repairpermissions " + r, "controls on",
                                     "working off", "spinner off", "status ", "reevaluate",
                                     "info Selected tasks were finished."}));
}

void TestMaintenancePlan::abortWithoutKextFolders() {
    MaintenanceSandbox box;
    box.makeFolders({"Extra/Themes", "System/Library/Extensions"});
    Log log;
    RecordingView view(log);
    LoggingExecutor executor(log);
    MaintenancePlan plan(allBoxes(), box.paths(), executor, view);
    plan.setIsRoot([](const QString &) { return true; });

    QVERIFY(plan.prepare());
    plan.run();
    // Step one has nothing to repair; the later tasks are skipped even though ticked.
    QCOMPARE(log.lines, (QStringList{"rp " + box.rootPath(), "controls off", "working on",
                                     "spinner on", "status Repairing Extra permissions...",
                                     "status Rebuilding Extra mkext...", "controls on",
                                     "working off", "spinner off", "status ", "reevaluate",
                                     "error No Extra/Extensions or Extra/KextStore found."}));
}

void TestMaintenancePlan::prepare_data() {
    QTest::addColumn<QString>("boxes");
    QTest::addColumn<bool>("grant");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<QStringList>("shown");
    QTest::newRow("none") << "" << true << false
                          << QStringList{"spinner off", "error You haven't selected any options."};
    QTest::newRow("one mixed") << "erm~" << true << true << QStringList{};
    QTest::newRow("one on") << "slerp" << true << true << QStringList{};
    QTest::newRow("refused authorization shows nothing")
        << "erp erm slerp slerc" << false << false << QStringList{};
}

void TestMaintenancePlan::prepare() {
    QFETCH(QString, boxes);
    QFETCH(bool, grant);
    QFETCH(bool, accepted);
    QFETCH(QStringList, shown);
    MaintenanceSandbox box;
    Log log;
    RecordingView view(log);
    RecordingExecutor executor;
    executor.grant = grant;
    MaintenancePlan plan(::boxes(boxes), box.paths(), executor, view);

    QCOMPARE(plan.prepare(), accepted);
    QCOMPARE(executor.authorizeCalls, boxes.isEmpty() ? 0 : 1);
    QCOMPARE(log.lines, shown);
    QVERIFY(executor.commands.isEmpty());
}

void TestMaintenancePlan::builtinMkextWithoutKextcache() {
    MaintenanceSandbox box;
    QVERIFY(QFile::remove(box.dir.path() + "/usr/sbin/kextcache"));
    box.makeFolders({"Extra/KextStore"});
    setKextkeeperExecutable("/opt/kk/kextkeeper");
    Log log;
    RecordingView view(log);
    RecordingExecutor executor;
    MaintenancePlan plan(boxes("erm"), box.paths(), executor, view);
    plan.run();
    const QString r = box.rootPath();
    QCOMPARE(executor.commands,
             (QList<Command>{{"/opt/kk/kextkeeper",
                              {"mkext", "build", r + "Extra/Extensions.mkext",
                               r + "Extra/KextStore", "--arch", "i386", "--arch", "x86_64"},
                              true}}));
    setKextkeeperExecutable(QString());
}

QTEST_GUILESS_MAIN(TestMaintenancePlan)
#include "tst_maintenanceplan.moc"

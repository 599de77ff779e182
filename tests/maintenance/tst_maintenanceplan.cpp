#include "MaintenanceSandbox.h"
#include "exec/Executor.h"
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
    void prepareStopsWithoutTaskOrPassword();
    void builtinMkextWithoutKextcache();
};

namespace {

// The page and the root commands in one list, so the status line is seen to change
// before the commands of its step.
class Recorder final : public MaintenanceView, public Executor {
public:
    QStringList log;
    QList<Command> commands;
    bool grant = true;
    int authorizeCalls = 0;

    bool authorize() override {
        ++authorizeCalls;
        return grant;
    }
    void run(const Command &command) override {
        commands << command;
        log << "run " + QFileInfo(command.tool).fileName() + ' ' + command.args.join(' ');
    }
    void rootPathChosen(const QString &rootPath) override { log << "rp " + rootPath; }
    void setControlsEnabled(bool on) override { log << (on ? "controls on" : "controls off"); }
    void setWorking(bool on) override { log << (on ? "working on" : "working off"); }
    void setSpinning(bool on) override { log << (on ? "spinner on" : "spinner off"); }
    void setStatus(const QString &text) override { log << "status " + text; }
    void reevaluateVolume() override { log << "reevaluate"; }
    void showError(const QString &message) override { log << "error " + message; }
    void showInfo(const QString &message) override { log << "info " + message; }
};

// Words separated by blanks: the boxes "erp", "erm", "slerp" and "slerc" (a trailing
// "~" puts one in the mixed state), "prelink", "lion", and an Extra version like "10.6".
MaintenanceOptions boxes(const QString &which) {
    MaintenanceOptions options;
    options.volume = MaintenanceSandbox::volume;
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
const QString lionMkext =
    mkext("System/Library/Caches/com.apple.kext.caches/Startup/Extensions.mkext", sle);

} // namespace

void TestMaintenancePlan::commands_data() {
    QTest::addColumn<QString>("options");
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<QString>("productVersion"); // empty: no version file
    QTest::addColumn<bool>("startedSystem");
    QTest::addColumn<QStringList>("expected");

    const QStringList both{ext, store, sle};
    // All four on the started system with Extensions alone run end to end. One list per step.
    QTest::newRow("all four boxes, both folders, Lion, started system")
        << "erp erm slerp slerc prelink lion" << both << "10.7.2" << true
        << QStringList{own(ext), mode(ext), own(store), mode(store)} +
               QStringList{mkext(ext + ".mkext", store), touch(ext), mkext(ext + ".mkext", ext)} +
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

void TestMaintenancePlan::commands() {
    QFETCH(QString, options);
    QFETCH(QStringList, folders);
    QFETCH(QString, productVersion);
    QFETCH(bool, startedSystem);
    QFETCH(QStringList, expected);

    MaintenanceSandbox box;
    box.makeFolders(folders);
    if (!productVersion.isEmpty())
        box.writeProductVersion(productVersion);
    Recorder r;
    MaintenancePlan plan(boxes(options), box.paths(), r, r);
    QStringList asked;
    plan.setIsRoot([&](const QString &path) {
        asked << path;
        return startedSystem;
    });

    QVERIFY(plan.prepare());
    plan.run();
    QCOMPARE(r.commands, box.commands(expected));
    QCOMPARE(r.log.last(), "info Selected tasks were finished.");
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
    Recorder r;
    MaintenancePlan plan(::boxes(boxes), box.paths(), r, r);
    plan.setIsRoot([](const QString &) { return true; });

    QVERIFY(plan.prepare());
    QVERIFY(r.log.isEmpty()); // the job changes the controls itself
    plan.run();
    QCOMPARE(r.log, expected.replaceInStrings("R/", box.rootPath()));
}

void TestMaintenancePlan::prepareStopsWithoutTaskOrPassword() {
    MaintenanceSandbox box;
    Recorder r;
    QVERIFY(!MaintenancePlan(boxes(""), box.paths(), r, r).prepare());
    QCOMPARE(r.authorizeCalls, 0);
    QCOMPARE(r.log, (QStringList{"spinner off", "error You haven't selected any options."}));

    // A refused password ends it silently.
    r.grant = false;
    r.log.clear();
    QVERIFY(!MaintenancePlan(boxes("erp erm slerp slerc"), box.paths(), r, r).prepare());
    QCOMPARE(r.authorizeCalls, 1);
    QVERIFY(r.log.isEmpty());
}

void TestMaintenancePlan::builtinMkextWithoutKextcache() {
    MaintenanceSandbox box;
    QVERIFY(QFile::remove(box.dir.path() + "/usr/sbin/kextcache"));
    box.makeFolders({"Extra/KextStore"});
    setKextkeeperExecutable("/opt/kk/kextkeeper");
    Recorder rec;
    MaintenancePlan(boxes("erm"), box.paths(), rec, rec).run();
    setKextkeeperExecutable(QString());
    const QString r = box.rootPath();
    QCOMPARE(rec.commands,
             (QList<Command>{{"/opt/kk/kextkeeper",
                              {"mkext", "build", r + "Extra/Extensions.mkext",
                               r + "Extra/KextStore", "--arch", "i386", "--arch", "x86_64"},
                              true}}));
}

QTEST_GUILESS_MAIN(TestMaintenancePlan)
#include "tst_maintenanceplan.moc"

#include "AssembledWindow.h"
#include "CliRun.h"
#include "E2eSandbox.h"
#include "InstallController.h"
#include "MaintenanceController.h"
#include "RecordingSheets.h"
#include "ReportController.h"
#include "exec/AdminAuthentication.h"
#include "exec/IconAlert.h"
#include "filesdrop.h"
#include "maintenance/MkextRebuild.h"
#include "sandbox/LoadedKextState.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QStatusBar>
#include <QStringListModel>
#include <QTableView>
#include <QTest>
#include <QToolButton>
#include <QUrl>

// The real main window, driven like a user would, and the command-line verbs, each on a
// fresh sandbox Mac with real processes all the way down. For the same task both must leave
// exactly the same commands in the log, and every task must end with its message.
class TestE2e : public QObject {
    Q_OBJECT

    std::unique_ptr<E2eSandbox> m_mac;
    std::unique_ptr<E2eSandbox> m_cli; // the command line's own sandbox
    std::unique_ptr<AssembledWindow> m_app;
    RecordingSheets m_sheets;

    template <typename T> T *find(const char *name) const {
        return m_app->window.findChild<T *>(QLatin1String(name));
    }
    template <typename T> T *controller() const { return m_app->delegate.findChild<T *>(); }
    // Builds the sandbox and the window on it; the start-up's own diskutil questions are
    // taken out of the log so that it holds only what the task ran.
    void start(bool prelink = false, const QString &fixedRoot = {}) {
        m_mac = std::make_unique<E2eSandbox>();
        QVERIFY(m_mac->create(fixedRoot));
        QVERIFY(m_mac->writeSettings(prelink));
        const SystemPaths paths(m_mac->sandbox.root(), m_mac->home(), m_mac->settingsFolder());
        SystemPaths::setCurrent(paths);
        // On a sandbox root commands run directly, as `--root` makes them.
        AdminAuthentication::Config config;
        config.direct = true;
        config.environment = paths.rootEnvironment();
        AdminAuthentication::configureShared(config, nullptr);
        m_sheets.texts.clear();
        IconAlert::configureDefault(paths, AdminAuthentication::sharedInstance(),
                                    Alerts(nullptr, &m_sheets));
        m_app = std::make_unique<AssembledWindow>(paths);
        m_app->window.resize(800, 600);
        m_app->window.show();
        m_app->delegate.applicationDidFinishLaunching();
        QCOMPARE(find<QComboBox>("DiskSelMain")->currentText(), "Macintosh HD");
        m_mac->sandbox.clearLog();
    }

    bool startCli(bool prelink = false, const QString &fixedRoot = {}) {
        m_cli = std::make_unique<E2eSandbox>();
        return m_cli->create(fixedRoot) && m_cli->writeSettings(prelink);
    }
    CliRun cli(const QStringList &args) const {
        return runKextKeeper(m_cli->sandbox.root(), m_cli->home(), args);
    }

    // A file dropped on the window, as the file manager delivers it.
    void dropOnWindow(const QString &file) const {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(file)});
        QWidget *target = m_app->window.dropTarget();
        const QPoint at = target->rect().center();
        QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &enter);
        QDropEvent drop(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &drop);
    }

private slots:
    void cleanup() {
        m_app.reset();
        IconAlert::configureDefault(SystemPaths(), AdminAuthentication::sharedInstance(),
                                    Alerts(nullptr, nullptr));
        m_mac.reset();
        m_cli.reset();
    }

    void maintenanceWithAllFourOptions_data() {
        QTest::addColumn<bool>("prelink");
        QTest::newRow("prelink off") << false;
        QTest::newRow("prelink on") << true;
    }

    void maintenanceWithAllFourOptions() {
        QFETCH(bool, prelink);
        QVERIFY(startCli(prelink));
        const CliRun run = cli({"maintain", "--volume", "Macintosh HD", "--repair-extra",
                                "--rebuild-extra-mkext", "--repair-sle", "--rebuild-caches"});
        QCOMPARE(run.status, 0);
        QVERIFY(run.out.endsWith("Selected tasks were finished.\n"));
        QCOMPARE(m_cli->sandbox.logLines(), m_cli->maintenanceCommands(prelink));
        QVERIFY(QFileInfo(m_cli->r("Extra/Extensions.mkext")).size() > 0);

        start(prelink);
        // The parents' boxes tick their children: the command list shows all four options ran.
        find<QCheckBox>("cbExtra")->click();
        find<QCheckBox>("cbSLE")->click();
        QSignalSpy finished(controller<MaintenanceController>(),
                            &MaintenanceController::jobFinished);
        find<QPushButton>("bMainButton")->click();
        QVERIFY(finished.wait(30000));
        QCOMPARE(m_sheets.texts, QStringList{"info: Selected tasks were finished."});
        QCOMPARE(m_mac->sandbox.logLines(), m_mac->maintenanceCommands(prelink));
        QVERIFY(find<QPushButton>("bMainButton")->isEnabled());
        QVERIFY(QFileInfo(m_mac->r("Extra/Extensions.mkext")).size() > 0);
    }

    void installTwoDroppedKextsWithBackup() {
        QVERIFY(startCli());
        const QStringList toInstall = m_cli->makeBundlesToInstall();
        const CliRun run =
            cli(QStringList{"install", "--volume", "Macintosh HD", "--to", "extra", "--backup"} +
                toInstall);
        QVERIFY2(run.status == 0, qPrintable(run.err));
        QCOMPARE(m_cli->sandbox.logLines(), m_cli->installCommands(toInstall));
        QVERIFY(m_cli->installedWithBackup());

        start();
        const QStringList bundles = m_mac->makeBundlesToInstall();
        find<QAction>("ti_i")->trigger();
        // Dropped on the install list, with a file the list does not take between them.
        auto *table = find<QTableView>("tbkexts");
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(bundles[0]),
                      QUrl::fromLocalFile(m_mac->home() + "/notes.txt"),
                      QUrl::fromLocalFile(bundles[1])});
        QVERIFY(table->model()->dropMimeData(&data, Qt::CopyAction, 0, 0, {}));
        QCOMPARE(table->model()->rowCount(), 2);
        QVERIFY(find<QCheckBox>("cbBackup")->isChecked());

        QSignalSpy ended(controller<InstallController>(), &InstallController::installationEnded);
        find<QPushButton>("bInstButton")->click();
        QVERIFY(ended.wait(30000));
        QCOMPARE(m_sheets.texts, QStringList{"info: Selected tasks were finished."});
        QCOMPARE(m_mac->sandbox.logLines(), m_mac->installCommands(bundles));
        QVERIFY(m_mac->installedWithBackup());
    }

    void convertToKextStore_data() {
        QTest::addColumn<bool>("kextcache");
        QTest::newRow("with kextcache") << true;
        QTest::newRow("without kextcache") << false;
    }

    void convertToKextStore() {
        QFETCH(bool, kextcache);
        // Our own builder writes no line in the log: only the move is there without kextcache.
        QVERIFY(startCli());
        QStringList expected = m_cli->kextStoreCommands();
        if (!kextcache) {
            expected.removeLast();
            QVERIFY(QFile::remove(m_cli->sandbox.path("/usr/sbin/kextcache")));
        }
        const CliRun run = cli({"extra", "to-kextstore", "--volume", "Macintosh HD", "--yes"});
        QVERIFY2(run.status == 0, qPrintable(run.err));
        QCOMPARE(m_cli->sandbox.logLines(), expected);
        QVERIFY(m_cli->convertedToKextStore());

        start();
        const QString tool = m_mac->sandbox.path("/usr/sbin/kextcache");
        if (!kextcache)
            QVERIFY(QFile::remove(tool));
        // The archive must come from this run.
        const QString mkext = m_mac->r("Extra/Extensions.mkext");
        QVERIFY(QFile::remove(mkext));
        setKextkeeperExecutable(QStringLiteral(KK_BINARY));
        find<QAction>("MI_CreateEKS")->trigger();
        QMessageBox *box = nullptr;
        QTRY_VERIFY((box = m_app->window.findChild<QMessageBox *>()) && box->isVisible());
        QCOMPARE(box->text(), "Continue?");
        QCOMPARE(box->defaultButton()->text(), "Yes");
        box->defaultButton()->click();
        expected = m_mac->kextStoreCommands();
        if (!kextcache)
            expected.removeLast();
        QTRY_COMPARE_WITH_TIMEOUT(m_mac->sandbox.logLines(), expected, 30000);
        QVERIFY(m_mac->convertedToKextStore());
        QTRY_VERIFY(QFileInfo(mkext).size() > 0);
        QVERIFY(m_sheets.texts.isEmpty());
        QCOMPARE(m_app->window.statusBar()->currentMessage(),
                 kextcache
                     ? QString()
                     : tool + QStringLiteral(" is missing: the built-in mkext builder is used "
                                             "instead."));
    }

    // A kext that loads, and one the kernel refuses (i386 only), with kextload's own text
    // (%1: the bundle).
    void testLoad_data() {
        QTest::addColumn<QString>("bundle");
        QTest::addColumn<QString>("identifier");
        QTest::addColumn<QString>("error");
        QTest::newRow("loads") << "Extra/Extensions/ExampleDiskShim.kext"
                               << "org.example.driver.DiskShim"
                               << "";
        QTest::newRow("i386 only")
            << "Extra/Extensions/ExampleEthernet.kext"
            << "org.example.driver.Ethernet"
            << "%1 failed to load - (libkern/kext) not loadable (reason unspecified); check the "
               "system/kernel logs for errors or try kextutil(8).\n";
    }

    void testLoad() {
        QFETCH(QString, bundle);
        QFETCH(QString, identifier);
        QFETCH(QString, error);
        QVERIFY(startCli());
        const QString k = m_cli->r(bundle);
        const CliRun run = cli({"load", k});
        QCOMPARE(run.status, error.isEmpty() ? 0 : 1);
        QVERIFY2(run.err.contains(error.arg(k).trimmed()), qPrintable(run.err));
        QCOMPARE(m_cli->sandbox.logLines(), m_cli->testLoadCommands(k));
        QCOMPARE(LoadedKextState::find(LoadedKextState(m_cli->sandbox.root()).read(), identifier) !=
                     nullptr,
                 error.isEmpty());

        start();
        const QString kext = m_mac->r(bundle);
        find<QAction>("ti_c")->trigger();
        dropOnWindow(kext);
        QCOMPARE(find<QLineEdit>("kPath")->text(), kext);
        find<QPushButton>("bKextLoad")->click();
        QCOMPARE(m_mac->sandbox.logLines(), m_mac->testLoadCommands(kext));
        QCOMPARE(m_sheets.texts,
                 error.isEmpty() ? QStringList{} : QStringList{"error: " + error.arg(kext)});
        const QList<LoadedKext> kexts = LoadedKextState(m_mac->sandbox.root()).read();
        QCOMPARE(LoadedKextState::find(kexts, identifier) != nullptr, error.isEmpty());
    }

    void unloadByCommandLine_data() {
        QTest::addColumn<QString>("bundle");
        QTest::addColumn<QString>("error"); // empty: unloads
        QTest::newRow("unloads") << "/Extra/Extensions/ExampleAudioPatch.kext"
                                 << "";
        QTest::newRow("its plug-in keeps it")
            << "/System/Library/Extensions/SandboxACPIFamily.kext"
            << "Failed to unload com.sandboxmac.iokit.ACPIFamily - (libkern/kext) kext is in use "
               "or retained (cannot unload).";
    }

    void unloadByCommandLine() {
        QFETCH(QString, bundle);
        QFETCH(QString, error);
        QVERIFY(startCli());
        const QString kext = m_cli->sandbox.path(bundle);
        const CliRun run = cli({"unload", kext});
        QCOMPARE(run.status, error.isEmpty() ? 0 : 1);
        QVERIFY2(run.err.contains(error), qPrintable(run.err));
        QCOMPARE(m_cli->sandbox.logLines(), QStringList{m_cli->tool("/sbin/kextunload", {kext})});
        QCOMPARE(cli({"loaded"}).out.contains("org.example.driver.AudioPatch (1.2)"),
                 !bundle.contains("AudioPatch"));
    }

    void unloadFromTheLoadedPage() {
        start();
        find<QAction>("ti_l")->trigger();
        auto *table = find<QTableView>("tbLoaded");
        const QStringList before = qobject_cast<QStringListModel *>(table->model())->stringList();
        const qsizetype row = before.indexOf("org.example.driver.AudioPatch (1.2)");
        QVERIFY2(row >= 0, qPrintable(before.join('\n')));
        // The details pane opens, the kext is found in the index, and it is unloaded.
        find<QToolButton>("buttonslide")->click();
        table->selectRow(int(row));
        // The index has the started system's own path, not the one through /Volumes.
        const QString kext = m_mac->sandbox.path("/Extra/Extensions/ExampleAudioPatch.kext");
        QCOMPARE(find<QLineEdit>("tfKPath")->text(), kext);
        find<QPushButton>("bUnload")->click();

        const QString kextstat = m_mac->tool("/usr/sbin/kextstat", {});
        QCOMPARE(m_mac->sandbox.logLines(),
                 (QStringList{kextstat, m_mac->tool("/sbin/kextunload", {kext}), kextstat}));
        QVERIFY(m_sheets.texts.isEmpty());
        const QStringList after = qobject_cast<QStringListModel *>(table->model())->stringList();
        QCOMPARE(after.size(), before.size() - 1);
        QVERIFY(!after.contains(before.at(row)));
        QCOMPARE(find<QLabel>("lbLdedFnd")->text(), QString("Found: %1").arg(after.size()));
        QVERIFY(find<QLineEdit>("tfKPath")->text().isEmpty());
    }

    void unpack() {
        start();
        const QString mkext = m_mac->r("Extra/Extensions.mkext");
        const QString folder = m_mac->desktop() + "/Mkext Contents";
        QVERIFY(QDir().mkpath(folder));
        find<QAction>("ti_u")->trigger();
        dropOnWindow(mkext);
        QVERIFY(find<QPlainTextEdit>("tvMkext")->toPlainText().startsWith(
            QLatin1String("Found 4 kexts:")));
        find<QComboBox>("MkArch")->setCurrentText("i386");
        QCOMPARE(find<QLineEdit>("MKUnPath")->text(), folder);
        find<QPushButton>("bUnpck")->click();

        const QString tool = "/usr/sbin/mkextunpack";
        QCOMPARE(m_mac->sandbox.logLines(),
                 (QStringList{m_mac->tool(tool, {"-v", mkext}),
                              m_mac->tool(tool, {"-a", "i386", "-d", folder, mkext})}));
        // Plug-ins come out beside their containers, as with Apple's tool.
        QCOMPARE(
            QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot),
            (QStringList{"ExampleAudioPatch.kext", "ExampleCPUTemp.kext", "ExampleDiskShim.kext",
                         "ExampleEthernet.kext", "ExampleSensors.kext"}));
        QCOMPARE(m_sheets.texts, QStringList{"info: Mkext was unpacked to selected directory."});
    }

    void savedReport() {
        const QString root = E2eSandbox::reportRoot();
        QVERIFY(startCli(false, root));
        const CliRun run = cli({"report", m_cli->desktop() + "/Sandbox Mac.txt"});
        QVERIFY2(run.status == 0, qPrintable(run.err));
        QCOMPARE(run.out, "Saved.\n");
        QFile written(m_cli->desktop() + "/Sandbox Mac.txt");
        QVERIFY(written.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(written.readAll()), E2eSandbox::expectedReport());
        QStringList log = m_cli->sandbox.logLines();
        log.sort();
        QCOMPARE(log, m_cli->reportCommands());

        start(false, root);
        QString offered;
        const QString file = m_mac->desktop() + "/report.txt";
        auto *report = m_app->loaded.reportController();
        report->setSavePanel([&offered, file](const QString &name, auto done) {
            offered = name;
            done(1, file);
        });
        QSignalSpy ended(report, &ReportController::reportEnded);
        find<QAction>("MI_CreateList")->trigger();
        QVERIFY(ended.wait(30000));
        QCOMPARE(offered, "Sandbox Mac");
        QCOMPARE(m_sheets.texts, QStringList{"info: Saved."});
        QFile saved(file);
        QVERIFY(saved.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(saved.readAll()), E2eSandbox::expectedReport());
        log = m_mac->sandbox.logLines();
        QVERIFY(!log.isEmpty());
        QCOMPARE(log.takeFirst(), m_mac->software());
        log.sort();
        QCOMPARE(log, m_mac->reportCommands());
    }
};

QTEST_MAIN(TestE2e)
#include "tst_e2e.moc"

#include "../app/WindowFixture.h"
#include "BundlePicker.h"
#include "ExtraMenuController.h"
#include "HeldExecutor.h"
#include "InstallController.h"
#include "MaintenanceController.h"
#include "RecordingSheets.h"
#include "TestScripts.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>
#include <QTreeWidget>

namespace {
const char *const installControls[] = {"bInstButton", "bInstBrowse", "bInstClear",
                                       "DiskSelInst", "cbBackup",    "inSLE",
                                       "inExtra",     "inDesktop",   "tbkexts"};
const char *const maintenanceControls[] = {"bMainButton", "cbSLE", "cbSLERP", "cbSLERC",
                                           "cbExtra",     "cbERP", "cbERM",   "DiskSelMain"};
} // namespace

// The installation page, the maintenance page and the Extra menu in a real main window:
// the table's drops and buttons, what the widgets show while a job runs on its background
// thread, the closing alert, and the "Continue?" sheets answered like a user would.
class TestJobControllers : public QObject {
    Q_OBJECT

    std::unique_ptr<WindowFixture> f;
    std::shared_ptr<HeldExecutor> executor;
    RecordingSheets sheets;
    InstallController *install = nullptr;
    MaintenanceController *maintenance = nullptr;
    ExtraMenuController *extraMenu = nullptr;

    // A volume made with the given folders and listed in both disk menus.
    QString addVolume(const QString &title, const QStringList &folders) {
        const QString root = f->makeVolume(title, folders);
        f->find<QComboBox>("DiskSelMain")->addItem(title);
        f->find<QComboBox>("DiskSelInst")->addItem(title);
        return root;
    }
    QString makeBundle(const QString &name) {
        const QString path = f->dir.path() + QStringLiteral("/kexts/") + name;
        QDir().mkpath(path + QStringLiteral("/Contents"));
        return path;
    }
    void clickInstall() { QTest::mouseClick(f->find<QPushButton>("bInstButton"), Qt::LeftButton); }

private slots:
    void init() {
        sheets.texts.clear();
        f = std::make_unique<WindowFixture>(&sheets);
        executor = std::make_shared<HeldExecutor>();
        f->test.useExecutor(executor);
        install = new InstallController(*f->delegate, f->test.services, f->tasks, *f->panels);
        maintenance = new MaintenanceController(*f->delegate, f->test.services, f->tasks);
        extraMenu = new ExtraMenuController(*f->delegate, f->test.services);
        QDir().mkpath(f->paths.system(QStringLiteral("/usr/sbin")));
        writeScript(QDir(f->paths.system(QStringLiteral("/usr/sbin"))), QStringLiteral("kextcache"),
                    "exit 0\n");
    }
    void cleanup() { f.reset(); }

    void clearRemovesSelectedRowsOrAll() {
        install->instkexts().append({"/a.kext", "/b.kext", "/c.kext", "/d.kext"});
        auto *table = f->find<QTableView>("tbkexts");
        for (int row : {0, 2})
            table->selectionModel()->select(table->model()->index(row, 0),
                                            QItemSelectionModel::Select |
                                                QItemSelectionModel::Rows);
        QTest::mouseClick(f->find<QPushButton>("bInstClear"), Qt::LeftButton);
        QCOMPARE(install->instkexts().entries(), (QStringList{"/b.kext", "/d.kext"}));
        QVERIFY(!table->selectionModel()->hasSelection());
        // With nothing selected, everything goes.
        QTest::mouseClick(f->find<QPushButton>("bInstClear"), Qt::LeftButton);
        QVERIFY(install->instkexts().entries().isEmpty());
    }

    void browseAppendsChosenBundleFolders() {
        const QString a = makeBundle(QStringLiteral("A.kext"));
        const QString b = makeBundle(QStringLiteral("Drïver's B.KEXT"));
        makeBundle(QStringLiteral("Not a bundle"));
        install->instkexts().append({QStringLiteral("/u/First.kext")});
        f->window->show();
        QTest::mouseClick(f->find<QPushButton>("bInstBrowse"), Qt::LeftButton);
        auto *picker = f->window->findChild<BundlePicker *>();
        QVERIFY(picker && picker->isVisible());
        QCOMPARE(picker->windowModality(), Qt::WindowModal);
        picker->setFolder(f->dir.path() + QStringLiteral("/kexts"));
        auto *view = picker->findChild<QTreeWidget *>();
        QCOMPARE(view->topLevelItemCount(), 3);
        for (const QString &name : {QStringLiteral("A.kext"), QStringLiteral("Drïver's B.KEXT")})
            view->findItems(name, Qt::MatchExactly).first()->setSelected(true);
        picker->chooseSelection();
        // Appended after what was there; the upper-case type is taken.
        QStringList entries = install->instkexts().entries();
        QCOMPARE(entries.takeFirst(), QStringLiteral("/u/First.kext"));
        entries.sort();
        QCOMPARE(entries, (QStringList{a, b}));
    }

    void refusedAuthorizationChangesNothing() {
        addVolume(QStringLiteral("HD"), {QStringLiteral("Extra/Extensions")});
        f->delegate->DiskSelectorInstallation(f->find<QComboBox>("DiskSelInst"));
        install->instkexts().append({makeBundle(QStringLiteral("A.kext"))});
        executor->grant = false;
        clickInstall();
        QCOMPARE(f->tasks.running(), 0); // the password is asked before any job starts
        QCOMPARE(executor->authorizeCalls, 1);
        QVERIFY(sheets.texts.isEmpty());
        QVERIFY(executor->commands().isEmpty());
        QVERIFY(!f->delegate->workingInst);
    }

    void installDisablesPageAndFinishes() {
        const int entries = 4;
        const QString volumeRoot =
            addVolume(QStringLiteral("Boot's HD"), {QStringLiteral("Extra/Extensions/A.kext"),
                                                    QStringLiteral("System/Library")});
        f->delegate->DiskSelectorInstallation(f->find<QComboBox>("DiskSelInst"));
        QFile(volumeRoot + QStringLiteral("/Extra/Extensions.mkext")).open(QIODevice::WriteOnly);
        QVERIFY(f->find<QRadioButton>("inExtra")->isChecked());
        const QString bundle = makeBundle(QStringLiteral("A.kext"));
        for (int i = 0; i < entries; ++i)
            install->instkexts().append({bundle});
        executor->hold = true;
        QSignalSpy ended(&f->tasks, &TaskRunner::taskEnded);

        clickInstall();
        QVERIFY(executor->started.tryAcquire(1, 5000));
        auto *bar = f->find<QProgressBar>("InstProgress");
        QCOMPARE(bar->maximum(), entries - 1);
        QVERIFY(f->delegate->workingInst);
        QTRY_VERIFY(!f->find<QWidget>("tbkexts")->isEnabled());
        for (const char *name : installControls)
            QVERIFY2(!f->find<QWidget>(name)->isEnabled(), name);
        QCOMPARE(f->delegate->rp, volumeRoot + QLatin1Char('/'));
        QCOMPARE(f->delegate->datedir.size(), qsizetype(14)); // the backup box starts ticked
        // Drops wait until the installation is over.
        QVERIFY(!install->instkexts().acceptDrop({QStringLiteral("/u/New.kext")}));

        executor->release.release();
        QTRY_COMPARE(ended.size(), 1);
        QTRY_COMPARE(sheets.texts,
                     QStringList{QStringLiteral("info: Selected tasks were finished.")});
        for (const char *name : installControls) // no S/L/E on this volume: switched off again
            QVERIFY2(f->find<QWidget>(name)->isEnabled() == (qstrcmp(name, "inSLE") != 0), name);
        QVERIFY(!f->delegate->workingInst);
        QCOMPARE(f->delegate->rp, volumeRoot);
        QCOMPARE(bar->maximum(), 1);
        QCOMPARE(bar->value(), 0);
        QCOMPARE(install->instkexts().entries().size(), entries);
        QCOMPARE(executor->commands().size(), 2 * entries + 4);
    }

    // What the page does around an error is the plan's, shown through the same view calls
    // as a finished run; here the error must reach the window as an alert.
    void folderErrorEndsTheInstallation() {
        addVolume(QStringLiteral("HD"), {"Extra/Extensions", "Extra/KextStore"});
        f->delegate->DiskSelectorInstallation(f->find<QComboBox>("DiskSelInst"));
        install->instkexts().append({makeBundle(QStringLiteral("A.kext"))});
        QSignalSpy ended(&f->tasks, &TaskRunner::taskEnded);
        clickInstall();
        QTRY_COMPARE(ended.size(), 1);
        QTRY_COMPARE(sheets.texts,
                     QStringList{"error: Both Extra/Extensions and Extra/KextStore found."});
        QVERIFY(executor->commands().isEmpty());
    }

    void maintenanceDrivesThePage() {
        addVolume("Mac HD's", {"Extra/KextStore", "System/Library/Extensions"});
        f->delegate->DiskSelectorMaintenance(nullptr);
        f->find<QCheckBox>("cbERP")->setChecked(true);
        f->find<QCheckBox>("cbSLERP")->setChecked(true);
        auto *button = f->find<QPushButton>("bMainButton");
        auto *spinner = f->find<QProgressBar>("circleMain");
        auto *status = f->find<QLabel>("lbMainTask");

        executor->hold = true;
        QSignalSpy finished(&f->tasks, &TaskRunner::taskEnded);
        button->click();
        // Held in its first command: everything the job did before it reaches the page.
        QVERIFY(executor->started.tryAcquire(1, 5000));
        QTRY_COMPARE(status->text(), "Repairing Extra permissions...");
        QVERIFY(f->delegate->workingMain);
        QVERIFY(!spinner->isHidden());
        QCOMPARE(f->delegate->rp, f->paths.volumeRoot("Mac HD's") + '/');
        for (const char *name : maintenanceControls)
            QVERIFY2(!f->find<QWidget>(name)->isEnabled(), name);
        button->click(); // disabled, and a job runs: no second job
        executor->release.release();

        QVERIFY(finished.wait(10000));
        QCOMPARE(finished.count(), 1);
        QCOMPARE(executor->commands().size(), 5);
        QCOMPARE(sheets.texts, QStringList{"info: Selected tasks were finished."});
        QVERIFY(!f->delegate->workingMain);
        QVERIFY(spinner->isHidden());
        QCOMPARE(status->text(), QString());
        QVERIFY(button->isEnabled());
        QVERIFY(f->find<QComboBox>("DiskSelMain")->isEnabled());
        // The closing re-evaluation forms rp again the selectors' way, without the slash.
        QCOMPARE(f->delegate->rp, f->paths.volumeRoot("Mac HD's"));
        QVERIFY(!maintenance->jobRunning());
    }

    void abortRestoresTheMaintenancePage() {
        // The kexts went away after the volume was chosen (another program, a person in a
        // terminal). Without S/L/E either, the closing re-evaluation must switch off again
        // what the job re-enabled.
        const QString root = addVolume("Boot", {"Extra/Extensions"});
        f->delegate->DiskSelectorMaintenance(nullptr);
        f->find<QCheckBox>("cbERM")->setChecked(true);
        QVERIFY(QDir(root + "/Extra/Extensions").removeRecursively());
        QSignalSpy finished(&f->tasks, &TaskRunner::taskEnded);
        f->find<QPushButton>("bMainButton")->click();
        QVERIFY(finished.wait(10000));
        QCOMPARE(sheets.texts, QStringList{"error: No Extra/Extensions or Extra/KextStore found."});
        QVERIFY(executor->commands().isEmpty());
        QVERIFY(f->find<QPushButton>("bMainButton")->isEnabled());
        QVERIFY(!f->find<QCheckBox>("cbERM")->isEnabled());
        QVERIFY(!f->find<QCheckBox>("cbSLERP")->isEnabled());
        QVERIFY(!f->delegate->workingMain);
    }

    void sheetAnswers_data() {
        QTest::addColumn<QString>("action");
        QTest::addColumn<QString>("answer"); // button text, or "escape"
        QTest::addColumn<QStringList>("commands");
        // The questions and commands themselves are the Extra operations' own; here the
        // question must reach the sheet and the answer the operation.
        QTest::newRow("bring back, Yes") << "MI_BringBackEE"
                                         << "Yes" << QStringList{"mv KextStore Extensions"};
        QTest::newRow("create, No") << "MI_CreateEKS"
                                    << "No" << QStringList{};
        QTest::newRow("create, Escape") << "MI_CreateEKS"
                                        << "escape" << QStringList{};
    }
    void sheetAnswers() {
        QFETCH(QString, action);
        QFETCH(QString, answer);
        QFETCH(QStringList, commands);
        const QString root = addVolume("HD", {"Extra/KextStore", "Extra/Extensions"});
        // The command works from any page with the maintenance page's volume.
        f->window->showPage(PageLoaded);
        f->window->show();

        f->window->action(action)->trigger();
        QMessageBox *box = extraMenu->openQuestion();
        QVERIFY(box);
        QCOMPARE(box->text(), "Continue?");
        QVERIFY2(box->informativeText().startsWith("Do you want to "),
                 qPrintable(box->informativeText()));
        QCOMPARE(box->windowModality(), Qt::WindowModal);
        QCOMPARE(box->buttons().size(), 2);
        if (answer == "escape")
            QTest::keyClick(box, Qt::Key_Escape);
        else
            for (QAbstractButton *button : box->buttons())
                if (button->text() == answer)
                    button->click();
        QTRY_VERIFY(!extraMenu->openQuestion());
        QCOMPARE(executor->commands().replaceInStrings(root + "/Extra/", QString()), commands);
        QVERIFY(sheets.texts.isEmpty());
    }

    void hideNeedsAnExtraFolder() {
        addVolume("HD", {"System/Library/Extensions"});
        f->window->action("MI_HideExtra")->trigger();
        QCOMPARE(sheets.texts, QStringList{"error: No Extra folder on selected disk."});
    }
};

QTEST_MAIN(TestJobControllers)
#include "tst_jobcontrollers.moc"

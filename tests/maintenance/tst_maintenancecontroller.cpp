#include "../app/WindowFixture.h"
#include "ExtraMenuController.h"
#include "HeldExecutor.h"
#include "MaintenanceController.h"
#include "RecordingSheets.h"
#include "exec/AdminAuthentication.h"
#include "exec/IconAlert.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

// The maintenance page's button and the Extra menu in the real window: what the
// widgets show while the job runs on its background thread, the closing alert, and the
// "Continue?" sheets answered like a user would.
class TestMaintenanceController : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void jobDrivesThePage();
    void abortRestoresThePage();
    void sheetAnswers_data();
    void sheetAnswers();
    void hideNeedsAnExtraFolder();

private:
    // A volume chosen on the maintenance page, made with the given folders.
    QString chooseVolume(const QString &title, const QStringList &folders) {
        const QString root = f->makeVolume(title, folders);
        f->find<QComboBox>("DiskSelMain")->addItem(title);
        f->delegate->DiskSelectorMaintenance(nullptr);
        return root;
    }
    MaintenanceController *maintenance() {
        auto *controller = new MaintenanceController(*f->delegate);
        controller->setExecutor(executor);
        return controller;
    }
    ExtraMenuController *extraMenu() {
        auto *controller = new ExtraMenuController(*f->delegate);
        controller->setExecutor(executor);
        return controller;
    }

    std::unique_ptr<WindowFixture> f;
    std::shared_ptr<HeldExecutor> executor;
    RecordingSheets sheets;
};

namespace {
const char *const pageControls[] = {"bMainButton", "cbSLE", "cbSLERP", "cbSLERC",
                                    "cbExtra",     "cbERP", "cbERM",   "DiskSelMain"};
} // namespace

void TestMaintenanceController::init() {
    f = std::make_unique<WindowFixture>();
    executor = std::make_shared<HeldExecutor>();
    sheets.texts.clear();
    IconAlert::configureDefault(f->paths, AdminAuthentication::sharedInstance(),
                                Alerts(nullptr, &sheets));
}

void TestMaintenanceController::cleanup() {
    IconAlert::configureDefault(f->paths, AdminAuthentication::sharedInstance(),
                                Alerts(nullptr, nullptr));
    f.reset();
}

void TestMaintenanceController::jobDrivesThePage() {
    chooseVolume("Mac HD's", {"Extra/KextStore", "System/Library/Extensions"});
    f->find<QCheckBox>("cbERP")->setChecked(true);
    f->find<QCheckBox>("cbSLERP")->setChecked(true);
    MaintenanceController *controller = maintenance();
    controller->setIsRoot([](const QString &) { return false; });
    auto *button = f->find<QPushButton>("bMainButton");
    auto *spinner = f->find<QProgressBar>("circleMain");
    auto *status = f->find<QLabel>("lbMainTask");

    executor->hold = true;
    QSignalSpy finished(controller, &MaintenanceController::jobFinished);
    button->click();
    // Held in its first command: everything the job did before it reaches the page.
    QVERIFY(executor->started.tryAcquire(1, 5000));
    QTRY_COMPARE(status->text(), "Repairing Extra permissions...");
    QVERIFY(f->delegate->workingMain);
    QVERIFY(!spinner->isHidden());
    QCOMPARE(f->delegate->rp, f->paths.volumeRoot("Mac HD's") + '/');
    for (const char *name : pageControls)
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
    QVERIFY(!controller->jobRunning());
}

void TestMaintenanceController::abortRestoresThePage() {
    // The kexts went away after the volume was chosen (another program, a person in a
    // terminal). Without S/L/E either, the closing re-evaluation must switch off again
    // what the job re-enabled.
    const QString root = chooseVolume("Boot", {"Extra/Extensions"});
    f->find<QCheckBox>("cbERM")->setChecked(true);
    QVERIFY(QDir(root + "/Extra/Extensions").removeRecursively());
    QSignalSpy finished(maintenance(), &MaintenanceController::jobFinished);
    f->find<QPushButton>("bMainButton")->click();
    QVERIFY(finished.wait(10000));
    QCOMPARE(sheets.texts, QStringList{"error: No Extra/Extensions or Extra/KextStore found."});
    QVERIFY(executor->commands().isEmpty());
    QVERIFY(f->find<QPushButton>("bMainButton")->isEnabled());
    QVERIFY(!f->find<QCheckBox>("cbERM")->isEnabled());
    QVERIFY(!f->find<QCheckBox>("cbSLERP")->isEnabled());
    QVERIFY(!f->delegate->workingMain);
}

void TestMaintenanceController::sheetAnswers_data() {
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

void TestMaintenanceController::sheetAnswers() {
    QFETCH(QString, action);
    QFETCH(QString, answer);
    QFETCH(QStringList, commands);

    const QString root = f->makeVolume("HD", {"Extra/KextStore", "Extra/Extensions"});
    f->find<QComboBox>("DiskSelMain")->addItem("HD");
    // The command works from any page with the maintenance page's volume.
    f->window->showPage(PageLoaded);
    f->window->show();
    ExtraMenuController *controller = extraMenu();

    f->window->action(action)->trigger();
    QMessageBox *box = controller->openQuestion();
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
    QTRY_VERIFY(!controller->openQuestion());
    QCOMPARE(executor->commands().replaceInStrings(root + "/Extra/", QString()), commands);
    QVERIFY(sheets.texts.isEmpty());
}

void TestMaintenanceController::hideNeedsAnExtraFolder() {
    f->makeVolume("HD", {"System/Library/Extensions"});
    f->find<QComboBox>("DiskSelMain")->addItem("HD");
    extraMenu();
    f->window->action("MI_HideExtra")->trigger();
    QCOMPARE(sheets.texts, QStringList{"error: No Extra folder on selected disk."});
}

QTEST_MAIN(TestMaintenanceController)
#include "tst_maintenancecontroller.moc"

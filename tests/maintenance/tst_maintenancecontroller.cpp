#include "../app/WindowFixture.h"
#include "ExtraMenuController.h"
#include "MaintenanceController.h"
#include "exec/AdminAuthentication.h"
#include "exec/Executor.h"
#include "exec/IconAlert.h"
#include "exec/SheetPresenter.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QMessageBox>
#include <QMutex>
#include <QProgressBar>
#include <QPushButton>
#include <QSemaphore>
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
    std::unique_ptr<WindowFixture> f;
};

namespace {

class RecordingSheets final : public SheetPresenter {
public:
    QStringList texts;
    void showSheet(Kind kind, const QString &, const QString &text, QObject *) override {
        texts << (kind == Kind::Error ? "error: " : "info: ") + text;
    }
};
RecordingSheets *sheets = nullptr;

// Records commands from the job's thread. With holdFirst the job waits in its first
// command until the test lets it go, so the page can be looked at mid-run.
class PageWatchingExecutor final : public Executor {
public:
    bool grant = true;
    bool holdFirst = false;
    int authorizeCalls = 0;
    QStringList commands;
    QSemaphore proceed;
    bool authorize() override {
        ++authorizeCalls;
        return grant;
    }
    void run(const Command &command) override {
        bool hold = false;
        {
            QMutexLocker lock(&m_mutex);
            commands << QFileInfo(command.tool).fileName() + ' ' + command.args.join(' ');
            hold = holdFirst && commands.size() == 1;
        }
        if (hold)
            proceed.acquire();
    }
    qsizetype count() {
        QMutexLocker lock(&m_mutex);
        return commands.size();
    }

private:
    QMutex m_mutex;
};

const char *const pageControls[] = {"bMainButton", "cbSLE", "cbSLERP", "cbSLERC",
                                    "cbExtra",     "cbERP", "cbERM",   "DiskSelMain"};

} // namespace

void TestMaintenanceController::init() {
    f = std::make_unique<WindowFixture>();
    sheets = new RecordingSheets;
    IconAlert::configureDefault(f->paths, AdminAuthentication::sharedInstance(),
                                Alerts(nullptr, sheets));
}

void TestMaintenanceController::cleanup() {
    IconAlert::configureDefault(f->paths, AdminAuthentication::sharedInstance(),
                                Alerts(nullptr, nullptr));
    f.reset();
    delete sheets;
    sheets = nullptr;
}

void TestMaintenanceController::jobDrivesThePage() {
    f->makeVolume("Mac HD's", {"Extra/KextStore", "System/Library/Extensions"});
    f->find<QComboBox>("DiskSelMain")->addItem("Mac HD's");
    f->delegate->DiskSelectorMaintenance(nullptr);
    f->find<QCheckBox>("cbERP")->setChecked(true);
    f->find<QCheckBox>("cbSLERP")->setChecked(true);
    auto executor = std::make_shared<PageWatchingExecutor>();
    auto *controller = new MaintenanceController(*f->delegate);
    controller->setExecutor(executor);
    controller->setIsRoot([](const QString &) { return false; });
    auto *button = f->find<QPushButton>("bMainButton");
    auto *spinner = f->find<QProgressBar>("circleMain");
    auto *status = f->find<QLabel>("lbMainTask");

    executor->holdFirst = true;
    QSignalSpy finished(controller, &MaintenanceController::jobFinished);
    button->click();
    // Held in its first command: everything the job did before it reaches the page.
    QTRY_COMPARE(executor->count(), 1);
    QTRY_COMPARE(status->text(), "Repairing Extra permissions...");
    QVERIFY(f->delegate->workingMain);
    QVERIFY(!spinner->isHidden());
    QCOMPARE(f->delegate->rp, f->paths.volumeRoot("Mac HD's") + '/');
    for (const char *name : pageControls)
        QVERIFY2(!f->find<QWidget>(name)->isEnabled(), name);
    button->click(); // disabled, and a job runs: no second job
    executor->proceed.release();

    QVERIFY(finished.wait(10000));
    QCOMPARE(finished.count(), 1);
    QCOMPARE(executor->count(), 5);
    QCOMPARE(sheets->texts, QStringList{"info: Selected tasks were finished."});
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
    const QString root = f->makeVolume("Boot", {"Extra/Extensions"});
    f->find<QComboBox>("DiskSelMain")->addItem("Boot");
    f->delegate->DiskSelectorMaintenance(nullptr);
    f->find<QCheckBox>("cbERM")->setChecked(true);
    QVERIFY(QDir(root + "/Extra/Extensions").removeRecursively());
    auto executor = std::make_shared<PageWatchingExecutor>();
    auto *controller = new MaintenanceController(*f->delegate);
    controller->setExecutor(executor);
    QSignalSpy finished(controller, &MaintenanceController::jobFinished);
    f->find<QPushButton>("bMainButton")->click();
    QVERIFY(finished.wait(10000));
    QCOMPARE(sheets->texts, QStringList{"error: No Extra/Extensions or Extra/KextStore found."});
    QVERIFY(executor->commands.isEmpty());
    QVERIFY(f->find<QPushButton>("bMainButton")->isEnabled());
    QVERIFY(!f->find<QCheckBox>("cbERM")->isEnabled());
    QVERIFY(!f->find<QCheckBox>("cbSLERP")->isEnabled());
    QVERIFY(!f->delegate->workingMain);
}

void TestMaintenanceController::sheetAnswers_data() {
    QTest::addColumn<QString>("action");
    QTest::addColumn<QString>("answer"); // button text, or "escape"
    QTest::addColumn<QString>("informative");
    QTest::addColumn<QStringList>("commands");

    const QString bringBack =
        "Do you want to bring back Extra/Extensions from Extra/KextStore on selected disk?";
    const QString create =
        "Do you want to create Extra/KextStore from Extra/Extensions on selected disk?\n"
        "Mkext will be created, it can take a while.";
    // The commands themselves are the Extra operations' own; here the answer must reach them.
    QTest::newRow("bring back, Yes")
        << "MI_BringBackEE"
        << "Yes" << bringBack << QStringList{"mv KextStore Extensions"};
    QTest::newRow("create, No") << "MI_CreateEKS"
                                << "No" << create << QStringList{};
    QTest::newRow("create, Escape") << "MI_CreateEKS"
                                    << "escape" << create << QStringList{};
}

void TestMaintenanceController::sheetAnswers() {
    QFETCH(QString, action);
    QFETCH(QString, answer);
    QFETCH(QString, informative);
    QFETCH(QStringList, commands);

    const QString root = f->makeVolume("HD", {"Extra/KextStore", "Extra/Extensions"});
    f->find<QComboBox>("DiskSelMain")->addItem("HD");
    // The command works from any page with the maintenance page's volume.
    f->window->showPage(PageLoaded);
    f->window->show();
    auto executor = std::make_shared<PageWatchingExecutor>();
    auto *controller = new ExtraMenuController(*f->delegate);
    controller->setExecutor(executor);

    f->window->action(action)->trigger();
    QMessageBox *box = controller->openQuestion();
    QVERIFY(box);
    QCOMPARE(box->text(), "Continue?");
    QCOMPARE(box->informativeText(), informative);
    QCOMPARE(box->windowModality(), Qt::WindowModal);
    QCOMPARE(box->buttons().size(), 2);
    QVERIFY(executor->commands.isEmpty());
    if (answer == "escape") {
        QTest::keyClick(box, Qt::Key_Escape);
    } else {
        QAbstractButton *button = nullptr;
        for (QAbstractButton *candidate : box->buttons())
            if (candidate->text() == answer)
                button = candidate;
        QVERIFY(button);
        button->click();
    }
    QTRY_VERIFY(!controller->openQuestion());
    QStringList ran;
    for (QString line : executor->commands)
        ran << line.replace(root + "/Extra/", QString());
    QCOMPARE(ran, commands);
    QVERIFY(sheets->texts.isEmpty());
}

void TestMaintenanceController::hideNeedsAnExtraFolder() {
    f->makeVolume("HD", {"System/Library/Extensions"});
    f->find<QComboBox>("DiskSelMain")->addItem("HD");
    auto executor = std::make_shared<PageWatchingExecutor>();
    auto *controller = new ExtraMenuController(*f->delegate);
    controller->setExecutor(executor);
    f->window->action("MI_HideExtra")->trigger();
    QCOMPARE(sheets->texts, QStringList{"error: No Extra folder on selected disk."});
    QCOMPARE(executor->authorizeCalls, 0);
    QVERIFY(!controller->openQuestion());
    QVERIFY(executor->commands.isEmpty());
}

QTEST_MAIN(TestMaintenanceController)
#include "tst_maintenancecontroller.moc"

#include "../app/WindowFixture.h"
#include "InstallController.h"
#include "TestScripts.h"
#include "exec/AdminAuthentication.h"
#include "exec/Executor.h"
#include "exec/IconAlert.h"
#include "exec/SheetPresenter.h"

#include <QComboBox>
#include <QFileDialog>
#include <QMutex>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>

// The installation page in a real main window: the table's drops, the clear and browse
// buttons, and the install button running the plan on a background thread.
class TestInstallController : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void clear_data();
    void clear();
    void browseAppendsChosenPaths();
    void fileDialogPicksSeveralBundleFolders();
    void refusedAuthorizationChangesNothing();
    void runDisablesPageAndFinishes();
    void earlyErrors_data();
    void earlyErrors();

private:
    void addVolume(const QString &title, const QStringList &folders);
    QString makeBundle(const QString &name);

    std::unique_ptr<WindowFixture> f;
    InstallController *controller = nullptr;
};

namespace {
class RecordingSheets final : public SheetPresenter {
public:
    QStringList texts;
    void showSheet(Kind kind, const QString &, const QString &text, QObject *) override {
        texts << (kind == Kind::Error ? QStringLiteral("error ") : QStringLiteral("info ")) + text;
    }
};
RecordingSheets sheets;

// Records commands from the job's thread; the first one waits until the test lets it
// go, so the test can look at the page while the job runs.
class HeldExecutor final : public Executor {
public:
    bool grant = true;
    bool hold = false;
    int authorizeCalls = 0;
    QSemaphore started;
    QSemaphore release;

    bool authorize() override {
        ++authorizeCalls;
        return grant;
    }
    void run(const Command &command) override {
        bool first = false;
        {
            QMutexLocker lock(&m_mutex);
            first = m_commands.isEmpty();
            m_commands << command.tool + QLatin1Char(' ') + command.args.join(QLatin1Char(' '));
        }
        if (first && hold) {
            started.release();
            release.acquire();
        }
    }
    QStringList commands() {
        QMutexLocker lock(&m_mutex);
        return m_commands;
    }

private:
    QMutex m_mutex;
    QStringList m_commands;
};

const char *const pageControls[] = {"bInstButton", "bInstBrowse", "bInstClear",
                                    "DiskSelInst", "cbBackup",    "inSLE",
                                    "inExtra",     "inDesktop",   "tbkexts"};

} // namespace

void TestInstallController::init() {
    sheets.texts.clear();
    IconAlert::configureDefault(SystemPaths(), AdminAuthentication::sharedInstance(),
                                Alerts(nullptr, &sheets));
    f = std::make_unique<WindowFixture>();
    controller = new InstallController(*f->delegate);
    controller->setIsRootProbe([](const QString &) { return false; });
    QDir().mkpath(f->paths.system(QStringLiteral("/usr/sbin")));
    writeScript(QDir(f->paths.system(QStringLiteral("/usr/sbin"))), QStringLiteral("kextcache"),
                "exit 0\n");
}

void TestInstallController::cleanup() {
    f.reset();
    IconAlert::configureDefault(SystemPaths(), AdminAuthentication::sharedInstance(),
                                Alerts(nullptr, nullptr));
}

void TestInstallController::addVolume(const QString &title, const QStringList &folders) {
    f->makeVolume(title, folders);
    f->find<QComboBox>("DiskSelMain")->addItem(title);
    f->find<QComboBox>("DiskSelInst")->addItem(title);
    f->delegate->DiskSelectorInstallation(f->find<QComboBox>("DiskSelInst"));
}

QString TestInstallController::makeBundle(const QString &name) {
    const QString path = f->dir.path() + QStringLiteral("/kexts/") + name;
    QDir().mkpath(path + QStringLiteral("/Contents"));
    return path;
}

void TestInstallController::clear_data() {
    QTest::addColumn<QList<int>>("select");
    QTest::addColumn<QStringList>("left");
    QTest::newRow("rows 0 and 2 of 4") << QList<int>{0, 2} << QStringList{"/b.kext", "/d.kext"};
    QTest::newRow("nothing selected") << QList<int>{} << QStringList{};
}

void TestInstallController::clear() {
    QFETCH(QList<int>, select);
    QFETCH(QStringList, left);
    controller->instkexts().append({"/a.kext", "/b.kext", "/c.kext", "/d.kext"});
    auto *table = f->find<QTableView>("tbkexts");
    for (int row : select)
        table->selectionModel()->select(table->model()->index(row, 0),
                                        QItemSelectionModel::Select | QItemSelectionModel::Rows);
    QTest::mouseClick(f->find<QPushButton>("bInstClear"), Qt::LeftButton);
    QCOMPARE(controller->instkexts().entries(), left);
    QVERIFY(!table->selectionModel()->hasSelection());
}

void TestInstallController::browseAppendsChosenPaths() {
    int returnCode = 1;
    QStringList chosen{"/u/A.kext", "/u/B.bundle", "/u/A.kext"};
    controller->setOpenPanel(
        [&](std::function<void(int, const QStringList &)> done) { done(returnCode, chosen); });
    controller->instkexts().append({"/u/First.kext"});
    QTest::mouseClick(f->find<QPushButton>("bInstBrowse"), Qt::LeftButton);
    QCOMPARE(controller->instkexts().entries(),
             (QStringList{"/u/First.kext", "/u/A.kext", "/u/B.bundle", "/u/A.kext"}));
    returnCode = 0;
    QTest::mouseClick(f->find<QPushButton>("bInstBrowse"), Qt::LeftButton);
    QCOMPARE(controller->instkexts().entries().size(), 4);
}

void TestInstallController::fileDialogPicksSeveralBundleFolders() {
    const QString a = makeBundle(QStringLiteral("A.kext"));
    const QString b = makeBundle(QStringLiteral("Drïver's B.kext"));
    makeBundle(QStringLiteral("Not a bundle"));
    f->window->show();
    controller->Browse();
    auto *dialog = f->window->findChild<QFileDialog *>();
    QVERIFY(dialog);
    QCOMPARE(dialog->windowModality(), Qt::WindowModal);
    QVERIFY(dialog->isVisible());
    auto *view = dialog->findChild<QAbstractItemView *>(QStringLiteral("listView"));
    QVERIFY(view);
    QCOMPARE(view->selectionMode(), QAbstractItemView::ExtendedSelection);

    dialog->setDirectory(f->dir.path() + QStringLiteral("/kexts"));
    // The folder listing fills in the background.
    QTRY_COMPARE(view->model()->rowCount(view->rootIndex()), 3);
    for (int row = 0; row < 3; ++row)
        view->selectionModel()->select(view->model()->index(row, 0, view->rootIndex()),
                                       QItemSelectionModel::Select | QItemSelectionModel::Rows);
    QMetaObject::invokeMethod(dialog, "accept");
    QStringList entries = controller->instkexts().entries();
    entries.sort();
    QCOMPARE(entries, (QStringList{a, b}));
}

void TestInstallController::refusedAuthorizationChangesNothing() {
    addVolume(QStringLiteral("HD"), {QStringLiteral("Extra/Extensions")});
    controller->instkexts().append({makeBundle(QStringLiteral("A.kext"))});
    HeldExecutor executor;
    executor.grant = false;
    controller->setExecutor(&executor);
    auto *bar = f->find<QProgressBar>("InstProgress");
    bar->setRange(0, 100);
    bar->setValue(40);
    QTest::mouseClick(f->find<QPushButton>("bInstButton"), Qt::LeftButton);
    QTest::qWait(50);
    QCOMPARE(executor.authorizeCalls, 1);
    QVERIFY(sheets.texts.isEmpty());
    QVERIFY(executor.commands().isEmpty());
    QCOMPARE(bar->maximum(), 100);
    QCOMPARE(bar->value(), 40);
    QVERIFY(!f->delegate->workingInst);
}

void TestInstallController::runDisablesPageAndFinishes() {
    const int entries = 4;
    addVolume(QStringLiteral("Boot's HD"),
              {QStringLiteral("Extra/Extensions/A.kext"), QStringLiteral("System/Library")});
    QFile(f->paths.volumeRoot(QStringLiteral("Boot's HD")) +
          QStringLiteral("/Extra/Extensions.mkext"))
        .open(QIODevice::WriteOnly);
    QVERIFY(f->find<QRadioButton>("inExtra")->isChecked());
    const QString bundle = makeBundle(QStringLiteral("A.kext"));
    for (int i = 0; i < entries; ++i)
        controller->instkexts().append({bundle});
    HeldExecutor executor;
    executor.hold = true;
    controller->setExecutor(&executor);
    QSignalSpy ended(controller, &InstallController::installationEnded);

    QTest::mouseClick(f->find<QPushButton>("bInstButton"), Qt::LeftButton);
    QVERIFY(executor.started.tryAcquire(1, 5000));
    auto *bar = f->find<QProgressBar>("InstProgress");
    QCOMPARE(bar->maximum(), entries - 1);
    QVERIFY(f->delegate->workingInst);
    QTRY_VERIFY(!f->find<QWidget>("tbkexts")->isEnabled());
    for (const char *name : pageControls)
        QVERIFY2(!f->find<QWidget>(name)->isEnabled(), name);
    const QString volumeRoot = f->paths.volumeRoot(QStringLiteral("Boot's HD"));
    QCOMPARE(f->delegate->rp, volumeRoot + QLatin1Char('/'));
    QCOMPARE(f->delegate->datedir.size(), qsizetype(14)); // the backup box starts ticked
    // Drops wait until the installation is over.
    QVERIFY(!controller->instkexts().acceptDrop({QStringLiteral("/u/New.kext")}));

    executor.release.release();
    QTRY_COMPARE(ended.size(), 1);
    QTRY_COMPARE(sheets.texts, QStringList{QStringLiteral("info Selected tasks were finished.")});
    for (const char *name : pageControls) {
        if (qstrcmp(name, "inSLE") != 0) // no S/L/E on this volume: switched off again
            QVERIFY2(f->find<QWidget>(name)->isEnabled(), name);
    }
    QVERIFY(!f->find<QWidget>("inSLE")->isEnabled());
    QVERIFY(!f->delegate->workingInst);
    QCOMPARE(f->delegate->rp, volumeRoot);
    QCOMPARE(bar->maximum(), 1);
    QCOMPARE(bar->value(), 0);
    QCOMPARE(controller->instkexts().entries().size(), entries);
    QCOMPARE(executor.commands().size(), 2 * entries + 4);
}

void TestInstallController::earlyErrors_data() {
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<QString>("destination");
    QTest::addColumn<QString>("alert");
    QTest::newRow("both Extra folders")
        << QStringList{"Extra/Extensions", "Extra/KextStore"} << "inExtra"
        << "error Both Extra/Extensions and Extra/KextStore found.";
    QTest::newRow("no S/L/E") << QStringList{"Extra/Extensions"} << "inSLE"
                              << "error No System/Library/Extensions on selected disk.";
}

void TestInstallController::earlyErrors() {
    QFETCH(QStringList, folders);
    QFETCH(QString, destination);
    QFETCH(QString, alert);
    addVolume(QStringLiteral("HD"), folders);
    // The radio cell is chosen by hand, as a user may before the folders change.
    for (const char *name : {"inExtra", "inSLE", "inDesktop"})
        f->find<QRadioButton>(name)->setChecked(destination == QLatin1String(name));
    controller->instkexts().append({makeBundle(QStringLiteral("A.kext"))});
    HeldExecutor executor;
    controller->setExecutor(&executor);
    QSignalSpy ended(controller, &InstallController::installationEnded);
    QTest::mouseClick(f->find<QPushButton>("bInstButton"), Qt::LeftButton);
    QTRY_COMPARE(ended.size(), 1);
    QTRY_COMPARE(sheets.texts, QStringList{alert});
    QVERIFY(executor.commands().isEmpty());
    QVERIFY(!f->delegate->workingInst);
    QVERIFY(f->find<QWidget>("bInstButton")->isEnabled());
    // The Extra error re-evaluates the page (the radio cells follow the volume again);
    // the S/L/E error leaves the cell the user chose.
    QCOMPARE(f->find<QRadioButton>("inSLE")->isChecked(), destination == QLatin1String("inSLE"));
    QCOMPARE(f->delegate->rp, f->paths.volumeRoot(QStringLiteral("HD")) +
                                  (destination == QLatin1String("inSLE") ? "/" : ""));
}

QTEST_MAIN(TestInstallController)
#include "tst_installcontroller.moc"

#include "../app/WindowFixture.h"
#include "HeldExecutor.h"
#include "InstallController.h"
#include "RecordingSheets.h"
#include "TestScripts.h"
#include "exec/AdminAuthentication.h"
#include "exec/IconAlert.h"

#include <QComboBox>
#include <QFileDialog>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
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
    void clearRemovesSelectedRowsOrAll();
    void browseAppendsChosenBundleFolders();
    void refusedAuthorizationChangesNothing();
    void runDisablesPageAndFinishes();
    void folderErrorEndsTheRun();

private:
    void addVolume(const QString &title, const QStringList &folders);
    QString makeBundle(const QString &name);
    void clickInstall() { QTest::mouseClick(f->find<QPushButton>("bInstButton"), Qt::LeftButton); }

    std::unique_ptr<WindowFixture> f;
    InstallController *controller = nullptr;
    std::unique_ptr<HeldExecutor> executor;
    RecordingSheets sheets;
};

namespace {
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
    executor = std::make_unique<HeldExecutor>();
    controller->setExecutor(executor.get());
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

void TestInstallController::clearRemovesSelectedRowsOrAll() {
    controller->instkexts().append({"/a.kext", "/b.kext", "/c.kext", "/d.kext"});
    auto *table = f->find<QTableView>("tbkexts");
    for (int row : {0, 2})
        table->selectionModel()->select(table->model()->index(row, 0),
                                        QItemSelectionModel::Select | QItemSelectionModel::Rows);
    QTest::mouseClick(f->find<QPushButton>("bInstClear"), Qt::LeftButton);
    QCOMPARE(controller->instkexts().entries(), (QStringList{"/b.kext", "/d.kext"}));
    QVERIFY(!table->selectionModel()->hasSelection());
    // With nothing selected, everything goes.
    QTest::mouseClick(f->find<QPushButton>("bInstClear"), Qt::LeftButton);
    QVERIFY(controller->instkexts().entries().isEmpty());
}

void TestInstallController::browseAppendsChosenBundleFolders() {
    const QString a = makeBundle(QStringLiteral("A.kext"));
    const QString b = makeBundle(QStringLiteral("Drïver's B.KEXT"));
    makeBundle(QStringLiteral("Not a bundle"));
    controller->instkexts().append({QStringLiteral("/u/First.kext")});
    f->window->show();
    QTest::mouseClick(f->find<QPushButton>("bInstBrowse"), Qt::LeftButton);
    auto *dialog = f->window->findChild<QFileDialog *>();
    QVERIFY(dialog && dialog->isVisible());
    dialog->setDirectory(f->dir.path() + QStringLiteral("/kexts"));
    QCOMPARE(dialog->windowModality(), Qt::WindowModal);
    auto *view = dialog->findChild<QAbstractItemView *>(QStringLiteral("listView"));
    QVERIFY(view);
    QCOMPARE(view->selectionMode(), QAbstractItemView::ExtendedSelection);
    // The folder listing fills in the background.
    QTRY_COMPARE(view->model()->rowCount(view->rootIndex()), 3);
    for (int row = 0; row < 3; ++row)
        view->selectionModel()->select(view->model()->index(row, 0, view->rootIndex()),
                                       QItemSelectionModel::Select | QItemSelectionModel::Rows);
    QMetaObject::invokeMethod(dialog, "accept");
    // Appended after what was there; the folder that is no bundle is left out, the
    // upper-case type is taken.
    QStringList entries = controller->instkexts().entries();
    QCOMPARE(entries.takeFirst(), QStringLiteral("/u/First.kext"));
    entries.sort();
    QCOMPARE(entries, (QStringList{a, b}));
}

void TestInstallController::refusedAuthorizationChangesNothing() {
    addVolume(QStringLiteral("HD"), {QStringLiteral("Extra/Extensions")});
    controller->instkexts().append({makeBundle(QStringLiteral("A.kext"))});
    executor->grant = false;
    clickInstall();
    QTest::qWait(50);
    QCOMPARE(executor->authorizeCalls, 1);
    QVERIFY(sheets.texts.isEmpty());
    QVERIFY(executor->commands().isEmpty());
    QVERIFY(!f->delegate->workingInst);
}

void TestInstallController::runDisablesPageAndFinishes() {
    const int entries = 4;
    addVolume(QStringLiteral("Boot's HD"),
              {QStringLiteral("Extra/Extensions/A.kext"), QStringLiteral("System/Library")});
    const QString volumeRoot = f->paths.volumeRoot(QStringLiteral("Boot's HD"));
    QFile(volumeRoot + QStringLiteral("/Extra/Extensions.mkext")).open(QIODevice::WriteOnly);
    QVERIFY(f->find<QRadioButton>("inExtra")->isChecked());
    const QString bundle = makeBundle(QStringLiteral("A.kext"));
    for (int i = 0; i < entries; ++i)
        controller->instkexts().append({bundle});
    executor->hold = true;
    QSignalSpy ended(controller, &InstallController::installationEnded);

    clickInstall();
    QVERIFY(executor->started.tryAcquire(1, 5000));
    auto *bar = f->find<QProgressBar>("InstProgress");
    QCOMPARE(bar->maximum(), entries - 1);
    QVERIFY(f->delegate->workingInst);
    QTRY_VERIFY(!f->find<QWidget>("tbkexts")->isEnabled());
    for (const char *name : pageControls)
        QVERIFY2(!f->find<QWidget>(name)->isEnabled(), name);
    QCOMPARE(f->delegate->rp, volumeRoot + QLatin1Char('/'));
    QCOMPARE(f->delegate->datedir.size(), qsizetype(14)); // the backup box starts ticked
    // Drops wait until the installation is over.
    QVERIFY(!controller->instkexts().acceptDrop({QStringLiteral("/u/New.kext")}));

    executor->release.release();
    QTRY_COMPARE(ended.size(), 1);
    QTRY_COMPARE(sheets.texts, QStringList{QStringLiteral("info: Selected tasks were finished.")});
    for (const char *name : pageControls) // no S/L/E on this volume: switched off again
        QVERIFY2(f->find<QWidget>(name)->isEnabled() == (qstrcmp(name, "inSLE") != 0), name);
    QVERIFY(!f->delegate->workingInst);
    QCOMPARE(f->delegate->rp, volumeRoot);
    QCOMPARE(bar->maximum(), 1);
    QCOMPARE(bar->value(), 0);
    QCOMPARE(controller->instkexts().entries().size(), entries);
    QCOMPARE(executor->commands().size(), 2 * entries + 4);
}

// What the page does around an error is the plan's, shown through the same view calls
// as a finished run; here the error must reach the window as an alert.
void TestInstallController::folderErrorEndsTheRun() {
    addVolume(QStringLiteral("HD"), {"Extra/Extensions", "Extra/KextStore"});
    controller->instkexts().append({makeBundle(QStringLiteral("A.kext"))});
    QSignalSpy ended(controller, &InstallController::installationEnded);
    clickInstall();
    QTRY_COMPARE(ended.size(), 1);
    QTRY_COMPARE(sheets.texts,
                 QStringList{"error: Both Extra/Extensions and Extra/KextStore found."});
    QVERIFY(executor->commands().isEmpty());
}

QTEST_MAIN(TestInstallController)
#include "tst_installcontroller.moc"

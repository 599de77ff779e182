#include "ToolbarCustomizeDialog.h"
#include "WindowFixture.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QTest>
#include <QToolBar>

// Page switching from the toolbar and the menu while the long tasks run.
class TestPageSwitching : public QObject {
    Q_OBJECT
private slots:
    void guards_data();
    void guards();
    void refusedToolbarClickSelectsShownPage();
    void customizeToolbarGuard_data();
    void customizeToolbarGuard();
    void customizeToolbarChangesItems();
};

enum Busy { Idle, MaintenanceRuns, InstallationRuns };

void TestPageSwitching::guards_data() {
    QTest::addColumn<QString>("action");
    QTest::addColumn<int>("busy");
    QTest::addColumn<int>("expectedPage");

    // Every row starts on the loaded kexts page (4); a refused switch stays there.
    QTest::newRow("toolbar maintenance, idle") << "ti_m" << int(Idle) << 0;
    QTest::newRow("toolbar maintenance, maintenance runs") << "ti_m" << int(MaintenanceRuns) << 0;
    QTest::newRow("toolbar maintenance, installation runs") << "ti_m" << int(InstallationRuns) << 4;
    QTest::newRow("toolbar installation, idle") << "ti_i" << int(Idle) << 1;
    QTest::newRow("toolbar installation, maintenance runs") << "ti_i" << int(MaintenanceRuns) << 4;
    QTest::newRow("toolbar installation, installation runs")
        << "ti_i" << int(InstallationRuns) << 1;
    QTest::newRow("toolbar unpacking, idle") << "ti_u" << int(Idle) << 2;
    QTest::newRow("toolbar unpacking, maintenance runs") << "ti_u" << int(MaintenanceRuns) << 4;
    QTest::newRow("toolbar unpacking, installation runs") << "ti_u" << int(InstallationRuns) << 4;
    QTest::newRow("toolbar checking, idle") << "ti_c" << int(Idle) << 3;
    QTest::newRow("toolbar checking, maintenance runs") << "ti_c" << int(MaintenanceRuns) << 3;
    QTest::newRow("toolbar checking, installation runs") << "ti_c" << int(InstallationRuns) << 3;

    QTest::newRow("menu maintenance, idle") << "MI_MenuMain" << int(Idle) << 0;
    QTest::newRow("menu maintenance, maintenance runs")
        << "MI_MenuMain" << int(MaintenanceRuns) << 0;
    QTest::newRow("menu maintenance, installation runs")
        << "MI_MenuMain" << int(InstallationRuns) << 4;
    QTest::newRow("menu installation, idle") << "MI_MenuInst" << int(Idle) << 1;
    QTest::newRow("menu installation, maintenance runs")
        << "MI_MenuInst" << int(MaintenanceRuns) << 4;
    QTest::newRow("menu installation, installation runs")
        << "MI_MenuInst" << int(InstallationRuns) << 1;
    QTest::newRow("menu unpacking, idle") << "MI_MenuUnpck" << int(Idle) << 2;
    QTest::newRow("menu unpacking, maintenance runs")
        << "MI_MenuUnpck" << int(MaintenanceRuns) << 4;
    QTest::newRow("menu unpacking, installation runs")
        << "MI_MenuUnpck" << int(InstallationRuns) << 4;
    QTest::newRow("menu checking, idle") << "MI_MenuCheck" << int(Idle) << 3;
    QTest::newRow("menu checking, maintenance runs") << "MI_MenuCheck" << int(MaintenanceRuns) << 3;
    QTest::newRow("menu checking, installation runs")
        << "MI_MenuCheck" << int(InstallationRuns) << 3;
}

void TestPageSwitching::guards() {
    QFETCH(QString, action);
    QFETCH(int, busy);
    QFETCH(int, expectedPage);

    WindowFixture f;
    f.window->showPage(PageLoaded);
    f.window->selectToolbarItem(QStringLiteral("ti_l"));
    f.delegate->workingMain = busy == MaintenanceRuns;
    f.delegate->workingInst = busy == InstallationRuns;

    QAction *item = f.window->action(action);
    QVERIFY(item);
    item->trigger();

    QCOMPARE(f.window->currentPage(), expectedPage);
    // Whether the switch happened or not, the toolbar shows the page that is shown.
    QCOMPARE(f.window->selectedToolbarItem(), MainWindow::toolbarIdentifier(expectedPage));
}

void TestPageSwitching::refusedToolbarClickSelectsShownPage() {
    WindowFixture f;
    f.window->action(QStringLiteral("MI_MenuCheck"))->trigger();
    f.window->action(QStringLiteral("MI_MenuMain"))->trigger();
    QCOMPARE(f.window->currentPage(), 0);
    f.delegate->workingMain = true;
    f.window->action(QStringLiteral("ti_i"))->trigger();
    QCOMPARE(f.window->currentPage(), 0);
    QCOMPARE(f.window->selectedToolbarItem(), QStringLiteral("ti_m"));
    f.window->action(QStringLiteral("ti_u"))->trigger();
    QCOMPARE(f.window->selectedToolbarItem(), QStringLiteral("ti_m"));
}

void TestPageSwitching::customizeToolbarGuard_data() {
    QTest::addColumn<int>("busy");
    QTest::addColumn<bool>("opens");
    QTest::newRow("idle") << int(Idle) << true;
    QTest::newRow("maintenance runs") << int(MaintenanceRuns) << false;
    QTest::newRow("installation runs") << int(InstallationRuns) << true;
}

void TestPageSwitching::customizeToolbarGuard() {
    QFETCH(int, busy);
    QFETCH(bool, opens);
    WindowFixture f;
    f.delegate->workingMain = busy == MaintenanceRuns;
    f.delegate->workingInst = busy == InstallationRuns;
    f.window->action(QStringLiteral("MI_TBCust"))->trigger();
    auto *dialog = f.window->findChild<ToolbarCustomizeDialog *>();
    QCOMPARE(dialog != nullptr, opens);
    if (dialog)
        QVERIFY(dialog->isVisible());
}

void TestPageSwitching::customizeToolbarChangesItems() {
    WindowFixture f;
    f.delegate->TBCust();
    auto *dialog = f.window->findChild<ToolbarCustomizeDialog *>();
    QVERIFY(dialog);
    auto *showUnpack = dialog->findChild<QCheckBox *>(QStringLiteral("show_ti_u"));
    QVERIFY(showUnpack && showUnpack->isChecked());
    showUnpack->click();
    QVERIFY(!f.window->action(QStringLiteral("ti_u"))->isVisible());
    // The menu still reaches the page whose item is hidden.
    f.window->action(QStringLiteral("MI_MenuUnpck"))->trigger();
    QCOMPARE(f.window->currentPage(), 2);

    auto *style = dialog->findChild<QComboBox *>(QStringLiteral("toolbarStyle"));
    style->setCurrentIndex(style->findData(int(Qt::ToolButtonTextOnly)));
    QCOMPARE(f.find<QToolBar>("ToolBar")->toolButtonStyle(), Qt::ToolButtonTextOnly);
}

QTEST_MAIN(TestPageSwitching)
#include "tst_pageswitching.moc"

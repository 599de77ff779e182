#include "ToolbarCustomizeDialog.h"
#include "WindowFixture.h"

#include <QAbstractButton>
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QTabWidget>
#include <QTest>
#include <QToolBar>

// The pages: switching from the toolbar and the menu while the long tasks run, the
// toolbar's customisation, and every page's texts fitting the window.
class TestPages : public QObject {
    Q_OBJECT
private slots:
    void guards_data();
    void guards();
    void customizeToolbarChangesItems();
    void textsFit_data();
    void textsFit();
};

enum Busy { Idle, MaintenanceRuns, InstallationRuns };

void TestPages::guards_data() {
    QTest::addColumn<QString>("action");
    QTest::addColumn<int>("busy");
    QTest::addColumn<int>("expectedPage");
    QTest::addColumn<bool>("dialogOpens"); // the toolbar's customisation dialog

    // Every row starts on the loaded kexts page (4); a refused switch stays there.
    // Per page: its toolbar item, its menu item, and whether it opens while each job runs.
    const struct {
        const char *toolbar, *menu;
        int page;
        bool duringMaintenance, duringInstallation;
    } pages[] = {{"ti_m", "MI_MenuMain", 0, true, false},
                 {"ti_i", "MI_MenuInst", 1, false, true},
                 {"ti_u", "MI_MenuUnpck", 2, false, false},
                 {"ti_c", "MI_MenuCheck", 3, true, true}};
    for (const auto &p : pages) {
        for (const char *item : {p.toolbar, p.menu}) {
            QTest::addRow("%s, idle", item) << item << int(Idle) << p.page << false;
            QTest::addRow("%s, maintenance runs", item)
                << item << int(MaintenanceRuns) << (p.duringMaintenance ? p.page : 4) << false;
            QTest::addRow("%s, installation runs", item)
                << item << int(InstallationRuns) << (p.duringInstallation ? p.page : 4) << false;
        }
    }
    // Only a running maintenance keeps the customisation dialog closed.
    QTest::newRow("MI_TBCust, idle") << "MI_TBCust" << int(Idle) << 4 << true;
    QTest::newRow("MI_TBCust, maintenance runs")
        << "MI_TBCust" << int(MaintenanceRuns) << 4 << false;
    QTest::newRow("MI_TBCust, installation runs")
        << "MI_TBCust" << int(InstallationRuns) << 4 << true;
}

void TestPages::guards() {
    QFETCH(QString, action);
    QFETCH(int, busy);
    QFETCH(int, expectedPage);
    QFETCH(bool, dialogOpens);

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
    auto *dialog = f.window->findChild<ToolbarCustomizeDialog *>();
    QCOMPARE(dialog && dialog->isVisible(), dialogOpens);
}

void TestPages::customizeToolbarChangesItems() {
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

void TestPages::textsFit_data() {
    QTest::addColumn<int>("page");
    int page = 0;
    for (const char *name : {"maintenance", "installation", "unpacking", "checking", "loaded"})
        QTest::newRow(name) << page++;
}

void TestPages::textsFit() {
    QFETCH(int, page);
    const QSize size(800, 600); // the start size; a larger window only gives more room

    WindowFixture f;
    f.makeVolume(QStringLiteral("Macintosh HD"), {"Extra/Extensions", "System/Library/Extensions"});
    f.delegate->applicationDidFinishLaunching();
    f.window->resize(size);
    f.window->show();
    f.window->showPage(page);
    QVERIFY(QTest::qWaitForWindowExposed(f.window.get()));
    QCOMPARE(f.window->size(), size);

    QWidget *shown = f.window->findChild<QTabWidget *>(QStringLiteral("TBV"))->currentWidget();
    for (QWidget *widget : shown->findChildren<QWidget *>()) {
        const bool hasText = qobject_cast<QLabel *>(widget) ||
                             qobject_cast<QAbstractButton *>(widget) ||
                             qobject_cast<QComboBox *>(widget);
        const QSize need = widget->minimumSizeHint();
        QVERIFY2(!hasText || !widget->isVisible() ||
                     (widget->width() >= need.width() && widget->height() >= need.height()),
                 qPrintable(widget->objectName() + QStringLiteral(" is clipped")));
    }
}

QTEST_MAIN(TestPages)
#include "tst_pages.moc"

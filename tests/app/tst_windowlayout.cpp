#include "WindowFixture.h"

#include <QAbstractButton>
#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QTabWidget>
#include <QTest>

// The window's layout at its start size: every page's texts fit, and the toolbar items
// carry images. Set KK_SCREENSHOT_DIR to also write one PNG per page.
class TestWindowLayout : public QObject {
    Q_OBJECT
private slots:
    void textsFit_data();
    void textsFit();
    void toolbarItemsHaveIcons();
    void everyPageControlExists_data();
    void everyPageControlExists();
};

void TestWindowLayout::textsFit_data() {
    QTest::addColumn<int>("page");
    QTest::addColumn<QSize>("size");
    const char *names[] = {"maintenance", "installation", "unpacking", "checking", "loaded"};
    for (int page = 0; page < 5; ++page) {
        QTest::addRow("%s at 800x600", names[page]) << page << QSize(800, 600);
        QTest::addRow("%s at 1100x800", names[page]) << page << QSize(1100, 800);
    }
}

void TestWindowLayout::textsFit() {
    QFETCH(int, page);
    QFETCH(QSize, size);

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
        if (!widget->isVisible())
            continue;
        const bool hasText = qobject_cast<QLabel *>(widget) ||
                             qobject_cast<QAbstractButton *>(widget) ||
                             qobject_cast<QComboBox *>(widget);
        if (!hasText)
            continue;
        const QString what = widget->objectName() + QStringLiteral(" is clipped");
        QVERIFY2(widget->width() >= widget->minimumSizeHint().width(), qPrintable(what));
        QVERIFY2(widget->height() >= widget->minimumSizeHint().height(), qPrintable(what));
    }

    const QString dir = qEnvironmentVariable("KK_SCREENSHOT_DIR");
    if (!dir.isEmpty())
        f.window->grab().save(QStringLiteral("%1/page%2-%3x%4.png")
                                  .arg(dir)
                                  .arg(page)
                                  .arg(size.width())
                                  .arg(size.height()));
}

void TestWindowLayout::toolbarItemsHaveIcons() {
    WindowFixture f;
    f.delegate->applicationDidFinishLaunching();
    for (int page = 0; page < 5; ++page) {
        QAction *item = f.window->action(MainWindow::toolbarIdentifier(page));
        QVERIFY(item);
        QVERIFY(!item->icon().isNull());
        QVERIFY(item->isCheckable());
    }
}

void TestWindowLayout::everyPageControlExists_data() {
    QTest::addColumn<QString>("name");
    const char *outlets[] = {"DiskSelMain", "cbExtra",      "cbERP",
                             "cbERM",       "cbSLE",        "cbSLERP",
                             "cbSLERC",     "bMainButton",  "circleMain",
                             "lbMainTask",  "DiskSelInst",  "tbkexts",
                             "bInstBrowse", "bInstClear",   "bInstButton",
                             "cbBackup",    "inExtra",      "inSLE",
                             "inDesktop",   "InstProgress", "MKPath",
                             "MKUnPath",    "MkArch",       "tvMkext",
                             "circleUnpck", "bSelectMkext", "bSelectFolderToUnpack",
                             "bUnpck",      "kPath",        "kx86_64",
                             "ki386",       "kppc",         "kppc64",
                             "circleChck",  "kdep",         "cbcheckdep",
                             "bCheckSel",   "bCheckDep",    "bKextLoad",
                             "tbLoaded",    "tfKPath",      "split",
                             "lbLdedFnd",   "tfLdedFltr",   "SVBottom",
                             "ka64",        "ka32",         "buttonslide",
                             "lbKname",     "bUnload",      "bReload",
                             "bReveal",     "TBV",          "ToolBar"};
    for (const char *outlet : outlets)
        QTest::newRow(outlet) << QString::fromLatin1(outlet);
    const char *actions[] = {
        "MI_CreateEKS",     "MI_BringBackEE",  "MI_ShowExtra", "MI_HideExtra", "MI_VerIndpd",
        "MI_Ver104",        "MI_Ver105",       "MI_Ver106",    "MI_Ver107",    "MI_VerSpacer",
        "MI_PrelinkKernel", "MI_checkatstart", "MI_Donate",    "MI_Spacer",    "MI_Loaded",
        "MI_CreateList",    "MI_TBCust"};
    for (const char *action : actions)
        QTest::newRow(action) << QString::fromLatin1(action);
}

void TestWindowLayout::everyPageControlExists() {
    QFETCH(QString, name);
    MainWindow window;
    QObject *found = window.findChild<QWidget *>(name);
    if (!found)
        found = window.findChild<QAction *>(name);
    QVERIFY2(found, qPrintable(name));
    QVERIFY2(window.findChildren<QObject *>(name).size() == 1, "outlet names are unique");
}

QTEST_MAIN(TestWindowLayout)
#include "tst_windowlayout.moc"

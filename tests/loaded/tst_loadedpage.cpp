#include "LoadedDelegate.h"
#include "LoadedPageController.h"
#include "MainWindow.h"
#include "ReportController.h"
#include "TestScripts.h"
#include "exec/AdminAuthentication.h"
#include "exec/IconAlert.h"
#include "exec/SheetPresenter.h"
#include "pages/LoadedPage.h"

#include <QAction>
#include <QCheckBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

// The loaded kexts page and the report from the window, on a sandbox Mac whose
// kextstat, kextunload and system_profiler are scripts.
class TestLoadedPage : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void refreshFromAnotherPage();
    void menuSelectsToolbarItem();
    void filter_data();
    void filter();
    void selectionWaitsForTheOpenPane();
    void unknownKext();
    void unloadSuccessRefreshesAndClears();
    void unloadFailureShowsTheToolsText();
    void reloadKeepsListAndPane();
    void reportSavedFromThePanel();
    void reportCancelled();
    void reportAbandonedWithBothExtraFolders();

private:
    struct Sheet {
        SheetPresenter::Kind kind;
        QString text;
    };
    class RecordingSheets final : public SheetPresenter {
    public:
        QList<Sheet> shown;
        void showSheet(Kind kind, const QString &, const QString &text, QObject *) override {
            shown << Sheet{kind, text};
        }
    };

    template <typename T> T *find(const char *name) const {
        T *widget = m_window->findChild<T *>(QLatin1String(name));
        if (!widget)
            qFatal("no %s in the window", name);
        return widget;
    }
    QTableView *tbLoaded() const { return find<QTableView>("tbLoaded"); }
    QLineEdit *tfLdedFltr() const { return find<QLineEdit>("tfLdedFltr"); }
    QLineEdit *tfKPath() const { return find<QLineEdit>("tfKPath"); }
    QLabel *lbLdedFnd() const { return find<QLabel>("lbLdedFnd"); }
    QLabel *lbKname() const { return find<QLabel>("lbKname"); }
    QCheckBox *ka64() const { return find<QCheckBox>("ka64"); }
    QCheckBox *ka32() const { return find<QCheckBox>("ka32"); }
    QToolButton *buttonslide() const { return find<QToolButton>("buttonslide"); }
    QWidget *SVBottom() const { return find<QWidget>("SVBottom"); }
    QPushButton *button(const char *name) const { return find<QPushButton>(name); }
    void trigger(const char *action) const { m_window->action(QLatin1String(action))->trigger(); }
    QString root() const { return m_dir->filePath(QStringLiteral("root")); }
    void makeKext(const QString &folder, const QString &name, const QString &identifier) const;
    void selectRow(const QString &text) const;
    void expandPane() const;

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<AdminAuthentication> m_session;
    RecordingSheets m_sheets;
    std::unique_ptr<MainWindow> m_window;
    std::unique_ptr<LoadedDelegate> m_delegate;
};

namespace {
// The listing lives in a state file, so that a successful kextunload can take its kext
// out of the next listing.
const QByteArray listing =
    "Index Refs Address            Size       Wired      Name (Version) <Linked Against>\n"
    "    6   20 0xffffff7f80736000 0x4000     0x4000     com.apple.kpi.iokit (10.8.0)\n"
    "   11    0 0xffffff7f807c5000 0x9000     0x9000     com.apple.iokit.IOACPIFamily (1.3.0) "
    "<5 4>\n"
    "   42    1 0xffffff7f80a3d000 0x29000    0x29000    org.voodoo.driver.VoodooHDA (2.7.2) "
    "<41 6 5 4 3>\n";

QByteArray readAll(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
} // namespace

void TestLoadedPage::init() {
    m_dir = std::make_unique<QTemporaryDir>();
    const QString home = m_dir->filePath(QStringLiteral("home"));
    const QString contents = m_dir->filePath(QStringLiteral("contents"));
    for (const QString &folder : {home, contents, root() + "/usr/sbin", root() + "/usr/bin"})
        QDir().mkpath(folder);
    const SystemPaths paths(root(), home, contents);

    const QString state = m_dir->filePath(QStringLiteral("kextstat.state"));
    QFile stateFile(state);
    QVERIFY(stateFile.open(QIODevice::WriteOnly));
    stateFile.write(listing);
    stateFile.close();
    const QDir sbin(root() + QStringLiteral("/usr/sbin"));
    writeScript(sbin, QStringLiteral("kextstat"), "cat '" + state.toUtf8() + "'\n");
    // Fails for a kext whose folder name says so; otherwise drops "its" line (VoodooHDA,
    // the only one a test unloads) from the listing.
    writeScript(sbin, QStringLiteral("kextunload"),
                "case \"$1\" in *Busy*) echo 'Failed to unload com.example.Busy - "
                "(libkern/kext) kext is in use or retained (cannot unload).' >&2; exit 1 ;; esac\n"
                "grep -v VoodooHDA '" +
                    state.toUtf8() + "' > '" + state.toUtf8() + ".new'; mv '" + state.toUtf8() +
                    ".new' '" + state.toUtf8() + "'\n");
    writeScript(sbin, QStringLiteral("kextload"), "exit 0\n");
    writeScript(sbin, QStringLiteral("system_profiler"),
                "case \"$1\" in SPSoftwareDataType) printf 'Software:\\n\\n    System Software "
                "Overview:\\n\\n      System Version: Mac OS X 10.6.8 (10K549)\\n      Kernel "
                "Version: Darwin 10.8.0\\n      Boot Volume: HD\\n      Boot Mode: Normal\\n     "
                " Computer Name: Test Mac\\n      User Name: T (t)\\n      Secure Virtual "
                "Memory: Off\\n      64-bit Kernel and Extensions: Yes\\n      Time since boot: "
                "5:00\\n' ;; *) printf 'Hardware:\\n\\n    Hardware Overview:\\n\\n      Model "
                "Name: Mac Pro\\n' ;; esac\n");

    makeKext(QStringLiteral("System/Library/Extensions"), QStringLiteral("IOACPIFamily.kext"),
             QStringLiteral("com.apple.iokit.IOACPIFamily"));
    makeKext(QStringLiteral("Extra/Extensions"), QStringLiteral("VoodooHDA.kext"),
             QStringLiteral("org.voodoo.driver.VoodooHDA"));

    AdminAuthentication::Config config;
    config.direct = true;
    config.environment = paths.rootEnvironment();
    m_session = std::make_unique<AdminAuthentication>(config, nullptr, nullptr);
    m_sheets.shown.clear();
    IconAlert::configureDefault(paths, *m_session, Alerts(nullptr, &m_sheets));

    m_window = std::make_unique<MainWindow>();
    m_delegate = std::make_unique<LoadedDelegate>(*m_window);
    const auto probe = [](const QString &path) {
        return path.endsWith(QLatin1String("VoodooHDA.kext"))
                   ? QStringLiteral("Mach-O 64-bit kext bundle x86_64\n")
                   : QStringLiteral("Mach-O object i386\n");
    };
    m_delegate->pageController()->setProbe(probe);
    m_delegate->reportController()->setProbe(probe);
}

void TestLoadedPage::cleanup() {
    m_delegate.reset();
    m_window.reset();
}

void TestLoadedPage::makeKext(const QString &folder, const QString &name,
                              const QString &identifier) const {
    const QString contents = root() + '/' + folder + '/' + name + QStringLiteral("/Contents");
    QDir().mkpath(contents);
    QFile plist(contents + QStringLiteral("/Info.plist"));
    QVERIFY(plist.open(QIODevice::WriteOnly));
    plist.write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n"
                "<key>CFBundleIdentifier</key><string>" +
                identifier.toUtf8() + "</string>\n</dict>\n</plist>\n");
}

void TestLoadedPage::selectRow(const QString &text) const {
    QTableView *table = tbLoaded();
    const QModelIndexList found = table->model()->match(table->model()->index(0, 0),
                                                        Qt::DisplayRole, text, 1, Qt::MatchExactly);
    QVERIFY2(!found.isEmpty(), qPrintable(text));
    table->selectRow(found.first().row());
}

void TestLoadedPage::expandPane() const {
    QTest::mouseClick(buttonslide(), Qt::LeftButton);
    QVERIFY(!buttonslide()->isChecked());
}

void TestLoadedPage::refreshFromAnotherPage() {
    m_window->showPage(PageChecking);
    tfLdedFltr()->setText(QStringLiteral("old filter"));
    trigger("ti_l");

    QCOMPARE(m_window->currentPage(), int(PageLoaded));
    QCOMPARE(m_delegate->pageController()->aLoaded(),
             (QStringList{"com.apple.kpi.iokit (10.8.0)", "com.apple.iokit.IOACPIFamily (1.3.0)",
                          "org.voodoo.driver.VoodooHDA (2.7.2)"}));
    QCOMPARE(tbLoaded()->model()->rowCount(), 3);
    QCOMPARE(lbLdedFnd()->text(), QStringLiteral("Found: 3"));
    QCOMPARE(tfLdedFltr()->text(), QString());
    QVERIFY(buttonslide()->isChecked());
    QCOMPARE(SVBottom()->maximumHeight(), LoadedPageController::collapsedHeight);

    // On the page itself an open pane keeps its height; the toggle reads collapsed.
    expandPane();
    QTRY_COMPARE(SVBottom()->maximumHeight(), LoadedPageController::expandedHeight);
    trigger("ti_l");
    QVERIFY(buttonslide()->isChecked());
    QCOMPARE(SVBottom()->maximumHeight(), LoadedPageController::expandedHeight);
}

void TestLoadedPage::menuSelectsToolbarItem() {
    m_window->showPage(PageMaintenance);
    m_window->selectToolbarItem(QStringLiteral("ti_m"));
    trigger("MI_Loaded");
    QCOMPARE(m_window->currentPage(), int(PageLoaded));
    QCOMPARE(m_window->selectedToolbarItem(), QStringLiteral("ti_l"));
    QCOMPARE(lbLdedFnd()->text(), QStringLiteral("Found: 3"));
}

void TestLoadedPage::filter_data() {
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QStringList>("rows");
    QTest::newRow("capitals") << "IOKIT"
                              << QStringList{"com.apple.kpi.iokit (10.8.0)",
                                             "com.apple.iokit.IOACPIFamily (1.3.0)"};
    QTest::newRow("version") << "2.7." << QStringList{"org.voodoo.driver.VoodooHDA (2.7.2)"};
    QTest::newRow("nothing matches") << "zzz" << QStringList();
}

void TestLoadedPage::filter() {
    QFETCH(QString, typed);
    QFETCH(QStringList, rows);
    trigger("ti_l");
    QTest::keyClicks(tfLdedFltr(), typed);
    QCOMPARE(m_delegate->pageController()->aLoaded(), rows);
    QCOMPARE(tbLoaded()->model()->rowCount(), rows.size());
    QCOMPARE(lbLdedFnd()->text(), QStringLiteral("Found: %1").arg(rows.size()));

    // Clearing the field brings every row of the last refresh back.
    tfLdedFltr()->selectAll();
    QTest::keyClick(tfLdedFltr(), Qt::Key_Backspace);
    QCOMPARE(lbLdedFnd()->text(), QStringLiteral("Found: 3"));
}

void TestLoadedPage::selectionWaitsForTheOpenPane() {
    trigger("ti_l");
    selectRow(QStringLiteral("org.voodoo.driver.VoodooHDA (2.7.2)"));
    QCOMPARE(tfKPath()->text(), QString());
    QCOMPARE(lbKname()->text(), QString());

    expandPane();
    QCOMPARE(tfKPath()->text(), root() + "/Extra/Extensions/VoodooHDA.kext");
    QCOMPARE(lbKname()->text(), QStringLiteral("VoodooHDA.kext"));
    QVERIFY(ka64()->isChecked());
    QVERIFY(!ka32()->isChecked());

    // With the pane open every selection fills it at once.
    selectRow(QStringLiteral("com.apple.iokit.IOACPIFamily (1.3.0)"));
    QCOMPARE(lbKname()->text(), QStringLiteral("IOACPIFamily.kext"));
    QVERIFY(!ka64()->isChecked());
    QVERIFY(ka32()->isChecked());

    // A kext installed while the pane is open is found after closing and opening it.
    makeKext(QStringLiteral("Extra/Extensions"), QStringLiteral("IOKit.kext"),
             QStringLiteral("com.apple.kpi.iokit"));
    selectRow(QStringLiteral("com.apple.kpi.iokit (10.8.0)"));
    QCOMPARE(lbKname()->text(), QStringLiteral("Unknown kext"));
    QTest::mouseClick(buttonslide(), Qt::LeftButton);
    QTRY_COMPARE(SVBottom()->maximumHeight(), LoadedPageController::collapsedHeight);
    expandPane();
    QCOMPARE(lbKname()->text(), QStringLiteral("IOKit.kext"));
    QTRY_COMPARE(SVBottom()->maximumHeight(), LoadedPageController::expandedHeight);
}

void TestLoadedPage::unknownKext() {
    trigger("ti_l");
    expandPane();
    selectRow(QStringLiteral("org.voodoo.driver.VoodooHDA (2.7.2)"));
    QVERIFY(ka64()->isChecked());
    selectRow(QStringLiteral("com.apple.kpi.iokit (10.8.0)"));
    QCOMPARE(tfKPath()->text(), QString());
    QCOMPARE(lbKname()->text(), QStringLiteral("Unknown kext"));
    QVERIFY(!ka64()->isChecked());
    QVERIFY(!ka32()->isChecked());
    // Nothing to unload: no tool runs, no alert.
    QTest::mouseClick(button("bUnload"), Qt::LeftButton);
    QVERIFY(m_sheets.shown.isEmpty());
    QCOMPARE(lbLdedFnd()->text(), QStringLiteral("Found: 3"));
}

void TestLoadedPage::unloadSuccessRefreshesAndClears() {
    trigger("ti_l");
    expandPane();
    selectRow(QStringLiteral("org.voodoo.driver.VoodooHDA (2.7.2)"));
    QTest::mouseClick(button("bUnload"), Qt::LeftButton);

    QVERIFY(m_sheets.shown.isEmpty());
    QCOMPARE(m_delegate->pageController()->aLoaded(),
             (QStringList{"com.apple.kpi.iokit (10.8.0)", "com.apple.iokit.IOACPIFamily (1.3.0)"}));
    QCOMPARE(lbLdedFnd()->text(), QStringLiteral("Found: 2"));
    QCOMPARE(tfKPath()->text(), QString());
    QCOMPARE(lbKname()->text(), QString());
    QVERIFY(!ka64()->isChecked());
}

void TestLoadedPage::unloadFailureShowsTheToolsText() {
    makeKext(QStringLiteral("Extra/Extensions"), QStringLiteral("Busy.kext"),
             QStringLiteral("com.apple.kpi.iokit"));
    trigger("ti_l");
    expandPane();
    selectRow(QStringLiteral("com.apple.kpi.iokit (10.8.0)"));
    QCOMPARE(lbKname()->text(), QStringLiteral("Busy.kext"));
    QTest::mouseClick(button("bUnload"), Qt::LeftButton);

    QCOMPARE(m_sheets.shown.size(), 1);
    QCOMPARE(m_sheets.shown.first().kind, SheetPresenter::Kind::Error);
    QCOMPARE(m_sheets.shown.first().text,
             QStringLiteral("Failed to unload com.example.Busy - (libkern/kext) kext is in use or "
                            "retained (cannot unload).\n"));
    QCOMPARE(lbLdedFnd()->text(), QStringLiteral("Found: 3"));
    QCOMPARE(lbKname()->text(), QStringLiteral("Busy.kext"));
}

void TestLoadedPage::reloadKeepsListAndPane() {
    trigger("ti_l");
    expandPane();
    selectRow(QStringLiteral("org.voodoo.driver.VoodooHDA (2.7.2)"));
    QTest::mouseClick(button("bReload"), Qt::LeftButton);
    QVERIFY(m_sheets.shown.isEmpty());
    // The stand-in unload did take the kext out of the listing, but a reload shows the
    // list of before and keeps the pane.
    QCOMPARE(lbLdedFnd()->text(), QStringLiteral("Found: 3"));
    QCOMPARE(lbKname()->text(), QStringLiteral("VoodooHDA.kext"));
}

void TestLoadedPage::reportSavedFromThePanel() {
    const QString file = m_dir->filePath(QStringLiteral("Test Mac.txt"));
    QString offered;
    m_delegate->reportController()->setSavePanel(
        [&](const QString &name, std::function<void(int, const QString &)> done) {
            offered = name;
            done(1, file);
        });
    QSignalSpy ended(m_delegate->reportController(), &ReportController::reportEnded);
    trigger("MI_CreateList");
    QCOMPARE(offered, QStringLiteral("Test Mac"));
    QVERIFY(ended.wait(20000));

    QCOMPARE(m_sheets.shown.size(), 1);
    QCOMPARE(m_sheets.shown.first().kind, SheetPresenter::Kind::Info);
    QCOMPARE(m_sheets.shown.first().text, QStringLiteral("Saved."));
    const QString report = QString::fromUtf8(readAll(file));
    QVERIFY(report.startsWith(QStringLiteral("1. Software Info:\nSystem Version:")));
    QVERIFY(report.contains(QStringLiteral("VoodooHDA.kext") + QString(4, ' ') + "\n"));
    // The widest path is the system kext's, so the Extra kext's path is padded to it.
    const QString voodoo = root() + QStringLiteral("/Extra/Extensions/VoodooHDA.kext");
    const QString acpi = root() + QStringLiteral("/System/Library/Extensions/IOACPIFamily.kext");
    QVERIFY(report.contains(QStringLiteral("org.voodoo.driver.VoodooHDA   2.7.2     ") + voodoo +
                            QString(acpi.size() + 2 - voodoo.size(), ' ') +
                            QStringLiteral("x86_64           \n")));
}

void TestLoadedPage::reportCancelled() {
    const QString file = m_dir->filePath(QStringLiteral("cancelled.txt"));
    m_delegate->reportController()->setSavePanel(
        [&](const QString &, std::function<void(int, const QString &)> done) { done(0, file); });
    QSignalSpy ended(m_delegate->reportController(), &ReportController::reportEnded);
    trigger("MI_CreateList");
    QVERIFY(!ended.wait(500));
    QVERIFY(!QFile::exists(file));
    QVERIFY(m_sheets.shown.isEmpty());
}

void TestLoadedPage::reportAbandonedWithBothExtraFolders() {
    QDir().mkpath(root() + QStringLiteral("/Extra/KextStore"));
    const QString file = m_dir->filePath(QStringLiteral("both.txt"));
    m_delegate->reportController()->setSavePanel(
        [&](const QString &, std::function<void(int, const QString &)> done) { done(1, file); });
    QSignalSpy ended(m_delegate->reportController(), &ReportController::reportEnded);
    trigger("MI_CreateList");
    QVERIFY(ended.wait(20000));
    QCOMPARE(m_sheets.shown.size(), 1);
    QCOMPARE(m_sheets.shown.first().kind, SheetPresenter::Kind::Error);
    QCOMPARE(m_sheets.shown.first().text,
             QStringLiteral("Both Extra/Extensions and Extra/KextStore found."));
    QVERIFY(!QFile::exists(file));
}

QTEST_MAIN(TestLoadedPage)
#include "tst_loadedpage.moc"

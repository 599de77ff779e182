#include "ChildWidget.h"
#include "CliRun.h"
#include "FilePanels.h"
#include "LoadedDelegate.h"
#include "LoadedPageController.h"
#include "MainWindow.h"
#include "RecordingSheets.h"
#include "ReportController.h"
#include "TaskRunner.h"
#include "TestScripts.h"
#include "TestServices.h"
#include "cli/CliRegistry.h"
#include "pages/LoadedPage.h"

#include <QAction>
#include <QCheckBox>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QStringListModel>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

namespace {
const QString iokit = QStringLiteral("com.apple.kpi.iokit (10.8.0)");
const QString acpi = QStringLiteral("com.apple.iokit.IOACPIFamily (1.3.0)");
const QString voodoo = QStringLiteral("org.voodoo.driver.VoodooHDA (2.7.2)");
} // namespace

// The loaded kexts page's own wiring, and the loaded, unload, reload and report verbs on the
// real binary (their output, exit status and usage errors), on a sandbox Mac whose kextstat,
// kextunload and system_profiler are scripts. The happy unload and the saved report run end
// to end elsewhere.
class TestLoadedUi : public QObject {
    Q_OBJECT
private slots:
    void init() {
        m_dir = std::make_unique<QTemporaryDir>();
        const QString home = m_dir->filePath(QStringLiteral("home"));
        const QString contents = m_dir->filePath(QStringLiteral("contents"));
        const QDir sbin(root() + QStringLiteral("/usr/sbin"));
        for (const QString &folder : {home, contents, sbin.path()})
            QDir().mkpath(folder);
        const SystemPaths paths(root(), home, contents);

        // The listing lives in a state file, so that a kextunload can take its kext out.
        const QByteArray state = m_dir->filePath(QStringLiteral("kextstat.state")).toUtf8();
        QVERIFY(QFile::copy(KK_FIXTURES "/kextstat/kextstat-64bit.txt", QString::fromUtf8(state)));
        writeScript(sbin, QStringLiteral("kextstat"), "cat '" + state + "'\n");
        // Fails for the IOKit kext; otherwise drops VoodooHDA's line.
        writeScript(
            sbin, QStringLiteral("kextunload"),
            "case \"$1\" in *IOKit*) echo 'Failed to unload com.example.Busy - "
            "(libkern/kext) kext is in use or retained (cannot unload).' >&2; exit 1 ;; esac\n"
            "grep -v VoodooHDA '" +
                state + "' > '" + state + ".new'; mv '" + state + ".new' '" + state + "'\n");
        writeScript(sbin, QStringLiteral("kextload"), "exit 0\n");
        writeScript(sbin, QStringLiteral("system_profiler"), "exit 0\n");
        QDir().mkpath(root() + QStringLiteral("/Jörg's.kext"));
        makeKext(QStringLiteral("System/Library/Extensions/IOACPIFamily.kext"),
                 QStringLiteral("com.apple.iokit.IOACPIFamily"));
        makeKext(QStringLiteral("Extra/Extensions/VoodooHDA.kext"),
                 QStringLiteral("org.voodoo.driver.VoodooHDA"));

        m_sheets.texts.clear();
        m_test = std::make_unique<TestServices>(paths, &m_sheets);

        m_window = std::make_unique<MainWindow>();
        m_panels = std::make_unique<FilePanels>(m_window.get());
        m_tasks = std::make_unique<TaskRunner>();
        m_delegate =
            std::make_unique<LoadedDelegate>(*m_window, m_test->services, *m_tasks, *m_panels);
        m_delegate->pageController()->setProbe([](const QString &path) {
            return path.endsWith(QLatin1String("VoodooHDA.kext"))
                       ? QStringLiteral("Mach-O 64-bit kext bundle x86_64\n")
                       : QStringLiteral("Mach-O object i386\n");
        });
    }

    void cleanup() {
        m_tasks.reset();
        m_delegate.reset();
        m_window.reset();
    }

    // The menu item refreshes the page and leaves the toolbar on it, as the toolbar item that
    // the other tests use does; typing filters, and a refresh clears the filter.
    void refreshAndFilter() {
        m_window->showPage(PageChecking);
        m_window->selectToolbarItem(QStringLiteral("ti_c"));
        trigger("MI_Loaded");
        QCOMPARE(m_window->currentPage(), int(PageLoaded));
        QCOMPARE(m_window->selectedToolbarItem(), QStringLiteral("ti_l"));
        QCOMPARE(rows().size(), 6);
        QVERIFY(find<QToolButton>("buttonslide")->isChecked());
        QCOMPARE(paneHeight(), LoadedPage::collapsedHeight);

        QTest::keyClicks(tfLdedFltr(), QStringLiteral("IOKIT"));
        QCOMPARE(rows(), (QStringList{iokit, acpi}));
        QCOMPARE(found(), QStringLiteral("Found: 2"));
        // On the page itself an open pane keeps its height; the toggle reads collapsed.
        expandPane();
        QTRY_COMPARE(paneHeight(), LoadedPage::expandedHeight);
        trigger("MI_Loaded");
        QCOMPARE(tfLdedFltr()->text(), QString());
        QCOMPARE(found(), QStringLiteral("Found: 6"));
        QVERIFY(find<QToolButton>("buttonslide")->isChecked());
        QCOMPARE(paneHeight(), LoadedPage::expandedHeight);
    }

    // The pane fills only while open. A kext installed while it is open is unknown until it
    // closes and opens again; until then there is nothing to show or unload (no tool runs,
    // no alert). A failed unload shows the tool's own words; a reload keeps the list of
    // before (the stand-in unload did take VoodooHDA out of the listing).
    void detailPane() {
        trigger("ti_l");
        selectRow(voodoo);
        QCOMPARE(find<QLineEdit>("tfKPath")->text(), QString());
        QCOMPARE(kname(), QString());

        expandPane();
        QCOMPARE(find<QLineEdit>("tfKPath")->text(), root() + "/Extra/Extensions/VoodooHDA.kext");
        QCOMPARE(kname(), QStringLiteral("VoodooHDA.kext"));
        QVERIFY(ka64() && !ka32());
        selectRow(acpi);
        QCOMPARE(kname(), QStringLiteral("IOACPIFamily.kext"));
        QVERIFY(!ka64() && ka32());

        makeKext(QStringLiteral("Extra/Extensions/IOKit.kext"),
                 QStringLiteral("com.apple.kpi.iokit"));
        selectRow(iokit);
        QCOMPARE(kname(), QStringLiteral("Unknown kext"));
        QCOMPARE(find<QLineEdit>("tfKPath")->text(), QString());
        QVERIFY(!ka64() && !ka32());
        click("bUnload");
        QVERIFY(m_sheets.texts.isEmpty());
        click("buttonslide");
        QTRY_COMPARE(paneHeight(), LoadedPage::collapsedHeight);
        expandPane();
        QCOMPARE(kname(), QStringLiteral("IOKit.kext"));
        QTRY_COMPARE(paneHeight(), LoadedPage::expandedHeight);

        click("bUnload");
        QCOMPARE(m_sheets.texts,
                 QStringList{"error: Failed to unload com.example.Busy - (libkern/kext) kext is in "
                             "use or retained (cannot unload).\n"});
        QCOMPARE(found(), QStringLiteral("Found: 6"));
        QCOMPARE(kname(), QStringLiteral("IOKit.kext"));
        m_sheets.texts.clear();
        selectRow(voodoo);
        click("bReload");
        QVERIFY(m_sheets.texts.isEmpty());
        QCOMPARE(found(), QStringLiteral("Found: 6"));
        QCOMPARE(kname(), QStringLiteral("VoodooHDA.kext"));
    }

    // A cancelled panel ends nothing; with both Extra folders the report ends with its error.
    void reportNotSaved() {
        const QString file = m_dir->filePath(QStringLiteral("report.txt"));
        int button = 0;
        m_panels->setAnswer(
            [&](FilePanels::Kind, const QString &, auto done) { done(button, {file}); });
        QSignalSpy ended(m_tasks.get(), &TaskRunner::taskEnded);
        trigger("MI_CreateList");
        QCOMPARE(m_tasks->running(), 0); // no report was started
        QVERIFY(m_sheets.texts.isEmpty());
        button = 1;
        QDir().mkpath(root() + QStringLiteral("/Extra/KextStore"));
        trigger("MI_CreateList");
        QVERIFY(ended.wait(20000));
        QCOMPARE(m_sheets.texts,
                 QStringList{"error: Both Extra/Extensions and Extra/KextStore found."});
        QVERIFY(!QFile::exists(file));
    }

    void verbs_data() {
        QTest::addColumn<QStringList>("args"); // "@" stands for the sandbox root
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("out");
        QTest::addColumn<QString>("err"); // a part of standard error

        QTest::newRow("loaded, filter in capitals")
            << QStringList{"loaded", "--filter", "IOKIT"} << 0
            << "com.apple.kpi.iokit (10.8.0)\ncom.apple.iokit.IOACPIFamily (1.3.0)\n"
            << "Found: 2\n";
        QTest::newRow("loaded, stray word") << QStringList{"loaded", "x"} << 2 << ""
                                            << "unexpected words";
        QTest::newRow("unload, missing kext") << QStringList{"unload", "@/Gone.kext"} << 1 << ""
                                              << "does not exist";
        QTest::newRow("unload without path") << QStringList{"unload"} << 2 << ""
                                             << "needs exactly one path";
        QTest::newRow("reload, dry run prints both lines")
            << QStringList{"--dry-run", "reload", QStringLiteral("@/Jörg's.kext")} << 0
            << QStringLiteral("kextunload '@/Jörg'\\''s.kext'\nkextload '@/Jörg'\\''s.kext'\n")
            << "";
        // "+" makes Extra/KextStore beside Extra/Extensions first.
        QTest::newRow("report with both Extra folders")
            << QStringList{"+", "report", "@/report.txt"} << 1 << ""
            << "kextkeeper report: Both Extra/Extensions and Extra/KextStore found.\n";
        QTest::newRow("report into a missing folder")
            << QStringList{"report", "@/gone/report.txt"} << 1 << ""
            << "kextkeeper report: could not write @/gone/report.txt\n";
    }

    void verbs() {
        QFETCH(QStringList, args);
        QFETCH(int, status);
        QFETCH(QString, out);
        QFETCH(QString, err);
        if (args.first() == QLatin1String("+")) {
            args.removeFirst();
            QVERIFY(QDir().mkpath(root() + QStringLiteral("/Extra/KextStore")));
        }
        const CliRun result = runKextKeeper(root(), m_dir->filePath(QStringLiteral("home")),
                                            args.replaceInStrings(QStringLiteral("@"), root()));
        QCOMPARE(result.status, status);
        QCOMPARE(result.out, out.replace(QLatin1Char('@'), root()));
        QVERIFY2(result.err.contains(err.replace(QLatin1Char('@'), root())),
                 qPrintable(result.err));
        QVERIFY(!QFile::exists(root() + QStringLiteral("/report.txt")));
    }

    // A path typed relative to the current folder reaches the tools absolute, so a name such
    // as "-rf.kext" is never taken for an option.
    void relativePathsBecomeAbsolute_data() {
        QTest::addColumn<QString>("verb");
        QTest::addColumn<QString>("out"); // "@" stands for the sandbox root
        QTest::newRow("load") << "load"
                              << "@/usr/sbin/chown -R 0:0 @/-rf.kext\nkextload @/-rf.kext\n";
        QTest::newRow("unload") << "unload"
                                << "kextunload @/-rf.kext\n";
        QTest::newRow("reload") << "reload"
                                << "kextunload @/-rf.kext\nkextload @/-rf.kext\n";
    }

    void relativePathsBecomeAbsolute() {
        QFETCH(QString, verb);
        QFETCH(QString, out);
        QVERIFY(QDir().mkpath(root() + "/-rf.kext"));
        const QString cwd = QDir::currentPath();
        QDir::setCurrent(root());
        const CliRun result =
            runKextKeeper(root(), m_dir->filePath("home"), {"--dry-run", verb, "-rf.kext"});
        QDir::setCurrent(cwd);
        QCOMPARE(result.out, out.replace('@', root()));
        QCOMPARE(result.status, 0);
    }

    // A refused password ends every verb that works as root with exit 1 and one line on
    // standard error, however silently the window takes it.
    void refusedPassword_data() {
        QTest::addColumn<QStringList>("args"); // "@" stands for the sandbox root
        const QString kext = QStringLiteral("@/Jörg's.kext");
        QTest::newRow("unload") << QStringList{"unload", kext};
        QTest::newRow("reload") << QStringList{"reload", kext};
        QTest::newRow("load") << QStringList{"load", kext};
        QTest::newRow("maintain") << QStringList{"maintain", "--volume", "HD", "--repair-sle"};
        QTest::newRow("extra") << QStringList{"extra", "hide", "--volume", "HD"};
        QTest::newRow("install") << QStringList{"install", "--volume", "HD", "--to", "sle", kext};
    }

    void refusedPassword() {
        QFETCH(QStringList, args);
        const SystemPaths paths(root(), m_dir->filePath(QStringLiteral("home")),
                                m_dir->filePath(QStringLiteral("contents")));
        for (const char *folder :
             {"/Volumes/HD/System/Library/Extensions", "/Volumes/HD/Extra/Extensions"})
            QVERIFY(QDir().mkpath(root() + QLatin1String(folder)));
        // A sudo that holds no grant, and no one to ask for a password.
        AdminAuthentication::Config config;
        config.sudo = writeScript(QDir(m_dir->path()), QStringLiteral("sudo"), "exit 1\n");
        AdminAuthentication refusing(config, nullptr, nullptr);
        AppServices services(paths, refusing);
        QString out;
        QString err;
        QTextStream outStream(&out);
        QTextStream errStream(&err);
        CliContext context{args.mid(1).replaceInStrings(QStringLiteral("@"), root()), services,
                           false, outStream, errStream};
        context.verb = args.first();
        QCOMPARE(CliRegistry::find(args.first())->run(context), int(CliTaskError));
        errStream.flush();
        QCOMPARE(err.count(QLatin1Char('\n')), 1);
        QVERIFY2(err.startsWith("kextkeeper " + args.first() + ": "), qPrintable(err));
    }

private:
    template <typename T> T *find(const char *name) const {
        return childWidget<T>(*m_window, name);
    }
    QLineEdit *tfLdedFltr() const { return find<QLineEdit>("tfLdedFltr"); }
    QString found() const { return find<QLabel>("lbLdedFnd")->text(); }
    QString kname() const { return find<QLabel>("lbKname")->text(); }
    bool ka64() const { return find<QCheckBox>("ka64")->isChecked(); }
    bool ka32() const { return find<QCheckBox>("ka32")->isChecked(); }
    int paneHeight() const { return find<QWidget>("SVBottom")->maximumHeight(); }
    void click(const char *name) const {
        QTest::mouseClick(find<QAbstractButton>(name), Qt::LeftButton);
    }
    void trigger(const char *action) const { m_window->action(QLatin1String(action))->trigger(); }
    // What the table shows.
    QStringList rows() const {
        const auto *model = qobject_cast<QStringListModel *>(find<QTableView>("tbLoaded")->model());
        return model ? model->stringList() : QStringList{"no string list model"};
    }
    QString root() const { return m_dir->filePath(QStringLiteral("root")); }
    void makeKext(const QString &bundle, const QString &identifier) const {
        writePlist(root() + '/' + bundle + "/Contents/Info.plist",
                   "<key>CFBundleIdentifier</key><string>" + identifier.toUtf8() + "</string>\n");
    }

    void selectRow(const QString &text) const {
        auto *table = find<QTableView>("tbLoaded");
        const QModelIndexList found = table->model()->match(
            table->model()->index(0, 0), Qt::DisplayRole, text, 1, Qt::MatchExactly);
        QVERIFY2(!found.isEmpty(), qPrintable(text));
        table->selectRow(found.first().row());
    }

    void expandPane() const {
        click("buttonslide");
        QVERIFY(!find<QToolButton>("buttonslide")->isChecked());
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    RecordingSheets m_sheets;
    std::unique_ptr<TestServices> m_test;
    std::unique_ptr<MainWindow> m_window;
    std::unique_ptr<FilePanels> m_panels;
    std::unique_ptr<TaskRunner> m_tasks;
    std::unique_ptr<LoadedDelegate> m_delegate;
};

QTEST_MAIN(TestLoadedUi)
#include "tst_loadedui.moc"

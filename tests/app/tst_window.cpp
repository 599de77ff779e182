#include "AppSettings.h"
#include "AppTranslator.h"
#include "CliRun.h"
#include "MessageBoxSheets.h"
#include "PasswordDialog.h"
#include "RecordingSheets.h"
#include "SystemImages.h"
#include "ToolbarCustomizeDialog.h"
#include "ToolbarIcons.h"
#include "UpdateCheck.h"
#include "WindowFixture.h"
#include "exec/Tr.h"
#include "filesdrop.h"
#include "pages/LoadedPage.h"
#include "pages/MaintenancePage.h"

#include <QAbstractButton>
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDesktopServices>
#include <QDragEnterEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QMimeData>
#include <QRadioButton>
#include <QScopeGuard>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTest>
#include <QTimer>
#include <QToolBar>
#include <QTranslator>
#include <QUrl>

namespace {
enum Busy { Idle, MaintenanceRuns, InstallationRuns };

struct Group {
    QCheckBox *parent, *first, *second;
};

Group group(const WindowFixture &f, const QString &name) {
    if (name == QLatin1String("Extra"))
        return {f.find<QCheckBox>("cbExtra"), f.find<QCheckBox>("cbERP"),
                f.find<QCheckBox>("cbERM")};
    return {f.find<QCheckBox>("cbSLE"), f.find<QCheckBox>("cbSLERP"), f.find<QCheckBox>("cbSLERC")};
}

// Makes the volume and lists it in both popups, as the start-up scan would.
void addVolume(WindowFixture &f, const QString &title, const QStringList &folders) {
    f.makeVolume(title, folders);
    f.find<QComboBox>("DiskSelMain")->addItem(title);
    f.find<QComboBox>("DiskSelInst")->addItem(title);
}

QString destination(const WindowFixture &f) {
    QStringList on;
    for (const char *name : {"inExtra", "inSLE", "inDesktop"}) {
        if (f.find<QRadioButton>(name)->isChecked())
            on << QLatin1String(name);
    }
    return on.isEmpty() ? QStringLiteral("none") : on.join(QLatin1Char('+'));
}

QList<bool> versionItemsVisible(const WindowFixture &f) {
    QList<bool> visible;
    for (const char *name : {"MI_Ver104", "MI_Ver105", "MI_Ver106", "MI_Ver107", "MI_VerSpacer"})
        visible << f.find<QAction>(name)->isVisible();
    return visible;
}

QByteArray appcast(const QStringList &versions) {
    QByteArray items;
    for (const QString &version : versions)
        items += QStringLiteral("<item><enclosure url=\"https://downloads.example/kk-%1.zip\" "
                                "sparkle:shortVersionString=\"%1\"/></item>")
                     .arg(version)
                     .toUtf8();
    return "<rss xmlns:sparkle=\"s\"><channel>" + items + "</channel></rss>";
}

QStringList items(const QComboBox *box) {
    QStringList texts;
    for (int i = 0; i < box->count(); ++i)
        texts << box->itemText(i);
    return texts;
}

QByteArray readFile(const QString &path) {
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    return file.readAll();
}
} // namespace

// The main window over real folder trees: start-up (volumes, settings, the update check,
// the donation probe, the drop target), switching pages while the long tasks run, the
// toolbar's customisation, every page's texts fitting, and the maintenance and installation
// pages' options.
class TestWindow : public QObject {
    Q_OBJECT
    QList<QUrl> m_opened;

public slots:
    // Stands in for the desktop's browser.
    void openUrl(const QUrl &url) { m_opened << url; }

private slots:
    void volumeListAndPreselection_data() {
        QTest::addColumn<QStringList>("volumes"); // "title:folder" entries
        QTest::addColumn<QString>("started");
        QTest::addColumn<QStringList>("listed"); // sorted; the list keeps the folder's order
        QTest::addColumn<bool>("rootAsked");
        QTest::addColumn<QString>("selected"); // empty: the first listed

        QTest::newRow("started system among three")
            << QStringList{"A:Extra", "B HD:System/Library", "C:System/Library"} << "B HD"
            << QStringList{"A", "B HD", "C"} << true << "B HD";
        QTest::newRow("no started system") << QStringList{"A:Extra", "B:System/Library"} << ""
                                           << QStringList{"A", "B"} << true << "";
        QTest::newRow("one usable volume is never probed")
            << QStringList{"Photos:Pictures", "Mac HD:System/Library", "to_remove:Extra"}
            << "Mac HD" << QStringList{"Mac HD"} << false << "Mac HD";
    }

    // Also: the toolbar starts on maintenance whatever page was shown.
    void volumeListAndPreselection() {
        QFETCH(QStringList, volumes);
        QFETCH(QString, started);
        QFETCH(QStringList, listed);
        QFETCH(bool, rootAsked);
        QFETCH(QString, selected);

        WindowFixture f;
        for (const QString &entry : volumes)
            f.makeVolume(entry.section(QLatin1Char(':'), 0, 0),
                         {entry.section(QLatin1Char(':'), 1)});
        f.startedVolume = started;
        f.window->showPage(PageChecking);
        f.window->selectToolbarItem(QStringLiteral("ti_c"));
        f.launch();
        QCOMPARE(f.window->selectedToolbarItem(), QStringLiteral("ti_m"));

        const QStringList shown = items(f.find<QComboBox>("DiskSelMain"));
        QStringList sorted = shown;
        sorted.sort();
        QCOMPARE(sorted, listed);
        if (selected.isEmpty())
            selected = shown.first();
        for (const char *name : {"DiskSelMain", "DiskSelInst"}) {
            QCOMPARE(items(f.find<QComboBox>(name)), shown);
            QCOMPARE(f.find<QComboBox>(name)->currentText(), selected);
        }
        // Asked in list order, with the volume root, up to the first started system.
        QStringList asked;
        for (qsizetype i = 0; rootAsked && i < shown.size(); ++i) {
            asked << f.paths.volumeRoot(shown[i]);
            if (shown[i] == started)
                break;
        }
        QCOMPARE(f.isRootAsked, asked);
        QCOMPARE(f.delegate->rp, f.paths.volumeRoot(selected));
    }

    void emptyMaintenancePageSaysWhy() {
        WindowFixture f;
        f.launch();
        QCOMPARE(f.window->maintenancePage()->emptyReason(),
                 "No volume with an Extra or System/Library folder was found in " +
                     f.paths.volumesDir() + ".");
        f.makeVolume(QStringLiteral("HD"), {QStringLiteral("System/Library")});
        f.launch();
        QCOMPARE(f.window->maintenancePage()->emptyReason(), QString());
    }

    void settingToggledTwice_data() {
        QTest::addColumn<QString>("item");
        QTest::addColumn<QString>("key");
        QTest::newRow("prelink kernel") << QString("MI_PrelinkKernel") << QString("Prelink Kernel");
        QTest::newRow("check at start-up")
            << QString("MI_checkatstart") << QString("SUCheckAtStartup");
    }

    void settingToggledTwice() {
        QFETCH(QString, item);
        QFETCH(QString, key);

        WindowFixture f;
        QDir(f.paths.contentsDir()).removeRecursively(); // seeding makes the folder
        AppSettings settings(f.paths.contentsDir());
        settings.seedDefaults();
        const QByteArray original = readFile(f.paths.infoPlist());
        QVERIFY(original.contains("SUFeedURL"));
        QAction *action = f.window->action(item);
        QVERIFY(!action->isChecked());

        action->trigger();
        QVERIFY(action->isChecked());
        // Seeding again never replaces the user's own choices.
        settings.seedDefaults();
        QCOMPARE(settings.boolean(key.toUtf8().constData()), true);

        action->trigger();
        QVERIFY(!action->isChecked());
        QCOMPARE(readFile(f.paths.infoPlist()), original);
    }

    // Without a readable settings file the mark still flips, and no file is made up.
    void settingToggledWithoutSettingsFile() {
        WindowFixture f;
        QFile::remove(f.paths.infoPlist());
        QAction *action = f.window->action(QStringLiteral("MI_PrelinkKernel"));
        const bool before = action->isChecked();
        action->trigger();
        QCOMPARE(action->isChecked(), !before);
        QVERIFY(!QFile::exists(f.paths.infoPlist()));
    }

    void checksAtStartup_data() {
        QTest::addColumn<QString>("settings");
        QTest::addColumn<QStringList>("versions"); // in the feed
        QTest::addColumn<bool>("donationPageThere");
        QTest::addColumn<bool>("entriesVisible");
        QTest::addColumn<QStringList>("sheets");

        // Only one of the two is fetched: a newer feed shows whether the feed was read, a
        // missing donation page whether the page was.
        const QString on =
            QStringLiteral("<key>SUCheckAtStartup</key><true/><key>Prelink Kernel</key><true/>");
        const QString off = QStringLiteral("<key>SUCheckAtStartup</key><false/>");
        const QStringList newer{"0.9", "2.10", "2.9"}; // the highest is neither first nor last
        QTest::newRow("updates on, newer version")
            << on << newer << false << true
            << QStringList{"info: KextKeeper 2.10 is available. You can download it from "
                           "https://downloads.example/kk-2.10.zip"};
        QTest::newRow("updates on, same version")
            << on << QStringList{KK_VERSION} << false << true << QStringList();
        QTest::newRow("updates off, donation page there")
            << off << newer << true << true << QStringList();
        QTest::newRow("no key, donation page missing")
            << QString() << newer << false << false << QStringList();
    }

    void checksAtStartup() {
        QFETCH(QString, settings);
        QFETCH(QStringList, versions);
        QFETCH(bool, donationPageThere);
        QFETCH(bool, entriesVisible);
        QFETCH(QStringList, sheets);

        RecordingSheets shown;
        WindowFixture f(&shown);
        const QString feed = f.dir.filePath("appcast.xml");
        // Any readable text will do as the donation page.
        const QString page = donationPageThere ? feed : f.dir.filePath("missing.html");
        QFile feedFile(feed);
        QVERIFY(feedFile.open(QIODevice::WriteOnly) && feedFile.write(appcast(versions)) > 0);
        feedFile.close();
        QVERIFY(writePlist(f.paths.infoPlist(),
                           (settings + QStringLiteral("<key>SUFeedURL</key><string>%1</string>"
                                                      "<key>KKDonationURL</key><string>%2</string>")
                                           .arg(QUrl::fromLocalFile(feed).toString(),
                                                QUrl::fromLocalFile(page).toString()))
                               .toUtf8()));

        QSignalSpy answered(f.delegate.get(), &TovrelAppDelegate::networkCheckEnded);
        f.launch();
        const bool on = settings.contains(QLatin1String("<true/>"));
        QCOMPARE(f.window->action(QStringLiteral("MI_checkatstart"))->isChecked(), on);
        QCOMPARE(f.window->action(QStringLiteral("MI_PrelinkKernel"))->isChecked(), on);
        QTRY_COMPARE(answered.count(), 1);
        QCOMPARE(f.window->action(QStringLiteral("MI_Donate"))->isVisible(), entriesVisible);
        QCOMPARE(f.window->donateSpacer()->isVisible(), entriesVisible);
        QCOMPARE(shown.texts, sheets);

        // The menu entry opens the page the settings name.
        m_opened.clear();
        QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "openUrl");
        f.window->action(QStringLiteral("MI_Donate"))->trigger();
        QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
        QCOMPARE(m_opened, QList<QUrl>{QUrl::fromLocalFile(page)});
    }

    void appcastParsing_data() {
        QTest::addColumn<QByteArray>("feed");
        QTest::addColumn<QString>("release"); // "VERSION DOWNLOAD", empty for none

        QTest::newRow("version elements and link")
            << QByteArray("<rss xmlns:sparkle=\"x\"><channel><item><sparkle:version>3.1</"
                          "sparkle:version><link>https://example.org/get</link></item></channel>"
                          "</rss>")
            << "3.1 https://example.org/get";
        QTest::newRow("short version preferred over build number")
            << QByteArray("<rss xmlns:sparkle=\"x\"><channel><item><enclosure url=\"u\" "
                          "sparkle:version=\"512\" sparkle:shortVersionString=\"1.4\"/></item>"
                          "</channel></rss>")
            << "1.4 u";
        // The closing tags are missing: an item read before the error does not count.
        QTest::newRow("feed cut short") << appcast({"9.0"}).chopped(16) << QString();
    }

    void appcastParsing() {
        QFETCH(QByteArray, feed);
        QFETCH(QString, release);
        const auto newest = UpdateCheck::newestRelease(feed);
        QCOMPARE(newest ? newest->version + ' ' + newest->download.toString() : QString(), release);
    }

    // Local files reach the delegate in the order dropped; text and web links are not files.
    void dropDeliversLocalFilesOnly() {
        WindowFixture f;
        QSignalSpy spy(f.delegate.get(), &TovrelAppDelegate::filesDropped);
        const QStringList files{QStringLiteral("/tmp/b.kext"), QStringLiteral("/tmp/it's a.kext"),
                                QStringLiteral("/tmp/Ü space/c.mkext")};
        QMimeData local, text, web;
        local.setUrls({QUrl::fromLocalFile(files[0]), QUrl::fromLocalFile(files[1]),
                       QUrl::fromLocalFile(files[2])});
        text.setText(QStringLiteral("/tmp/not-a-file-drop.kext"));
        web.setUrls({QUrl(QStringLiteral("https://example.org/x.kext"))});
        for (QMimeData *data : {&local, &text, &web}) {
            const QPoint at(10, 10);
            const Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction;
            QDragEnterEvent enter(at, actions, data, Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(f.window->dropTarget(), &enter);
            QVERIFY(enter.isAccepted());
            QCOMPARE(enter.dropAction(), Qt::CopyAction);
            QDropEvent event(at, actions, data, Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(f.window->dropTarget(), &event);
            QVERIFY(event.isAccepted());
        }
        QCOMPARE(spy, QList<QVariantList>{{files}});
    }

    void guards_data() {
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
                    << item << int(InstallationRuns) << (p.duringInstallation ? p.page : 4)
                    << false;
            }
        }
        // Only a running maintenance keeps the customisation dialog closed.
        QTest::newRow("MI_TBCust, idle") << "MI_TBCust" << int(Idle) << 4 << true;
        QTest::newRow("MI_TBCust, maintenance runs")
            << "MI_TBCust" << int(MaintenanceRuns) << 4 << false;
        QTest::newRow("MI_TBCust, installation runs")
            << "MI_TBCust" << int(InstallationRuns) << 4 << true;
    }

    void guards() {
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

        // A page that can't be entered looks so, and the window says why.
        f.delegate->updatePageGuards();
        if (action != QLatin1String("MI_TBCust")) {
            const bool open = busy == Idle || expectedPage != 4;
            QCOMPARE(item->isEnabled(), open);
            QCOMPARE(item->toolTip().contains(QLatin1String(" is blocked while ")), !open);
        }
        const char *const hints[] = {"", "Installation is blocked while maintenance runs",
                                     "Maintenance is blocked while an installation runs"};
        QCOMPARE(f.window->statusText(), QLatin1String(hints[busy]));
        f.delegate->workingMain = false;
        f.delegate->workingInst = false;
        f.delegate->updatePageGuards();
        QVERIFY(item->isEnabled());
        QCOMPARE(f.window->statusText(), QString());
    }

    void customizeToolbarChangesItems() {
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

    void textsFit_data() {
        QTest::addColumn<int>("page");
        int page = 0;
        for (const char *name : {"maintenance", "installation", "unpacking", "checking", "loaded"})
            QTest::newRow(name) << page++;
    }

    void textsFit() {
        QFETCH(int, page);
        const QSize size(800, 600); // the start size; a larger window only gives more room

        WindowFixture f;
        f.makeVolume(QStringLiteral("Macintosh HD"),
                     {"Extra/Extensions", "System/Library/Extensions"});
        f.launch();
        f.window->resize(size);
        f.window->show();
        f.window->showPage(page);
        // The loaded kexts' detail pane starts shut; its texts are read once it is open.
        f.find<QWidget>("SVBottom")->setMaximumHeight(LoadedPage::expandedHeight);
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

    void clicks_data() {
        QTest::addColumn<QString>("groupName");
        // From all off: 1 and 2 click the children, P the parent; V chooses a volume with
        // neither Extra nor S/L/E, then one with both; D ticks the second step and makes it
        // unavailable.
        QTest::addColumn<QString>("clicks");
        QTest::addColumn<QString>("states"); // first, second, parent

        const struct {
            const char *what, *clicks, *states;
        } rows[] = {
            {"first on -> mixed", "1", "on off mixed"},
            {"both on -> on", "12", "on on on"},
            {"first off again -> mixed", "121", "off on mixed"},
            {"both off -> off", "11", "off off off"},
            {"off parent turns both on", "P", "on on on"},
            {"on parent turns both off", "12P", "off off off"},
            {"mixed parent turns both on", "1P", "on on on"},
            // Once the mixed state is no longer allowed, the next click goes to off, not mixed.
            {"mixed parent clicked twice", "2PP", "off off off"},
            {"a bare volume clears a mixed group", "1V", "off off off"},
            // The parent keeps what the click left: a cleared mixed parent cycles to mixed,
            // then, no longer allowing it, on and off.
            {"the cleared parent turns both on", "1VP", "on on mixed"},
            {"then on", "1VPP", "on on on"},
            {"cleared again, off goes to on", "1VPVP", "on on on"},
        };
        for (const char *name : {"Extra", "SLE"}) {
            for (const auto &row : rows)
                QTest::addRow("%s: %s", name, row.what)
                    << QString::fromLatin1(name) << QString::fromLatin1(row.clicks)
                    << QString::fromLatin1(row.states);
        }
        // Only Extra clears an unavailable step (its mkext rebuild); the parent still shows on.
        QTest::newRow("Extra: a disabled step is cleared")
            << QString("Extra") << QString("D1") << QString("on off on");
        QTest::newRow("SLE: a disabled step stays")
            << QString("SLE") << QString("D1") << QString("on on on");
    }

    void clicks() {
        QFETCH(QString, groupName);
        QFETCH(QString, clicks);
        QFETCH(QString, states);

        WindowFixture f;
        addVolume(f, QStringLiteral("Bare"), {});
        addVolume(f, QStringLiteral("Boot"), {"Extra/Extensions", "System/Library/Extensions"});
        auto *volumes = f.find<QComboBox>("DiskSelMain");
        const Group g = group(f, groupName);
        for (const QChar click : clicks) {
            if (click == 'V') {
                for (int i : {0, 1}) {
                    volumes->setCurrentIndex(i);
                    f.delegate->DiskSelectorMaintenance(volumes);
                }
            } else if (click == 'D') {
                g.second->setChecked(true);
                g.second->setEnabled(false);
            } else {
                (click == '1' ? g.first : click == '2' ? g.second : g.parent)->click();
            }
        }

        auto name = [](const QCheckBox *box) {
            const Qt::CheckState state = box->checkState();
            return QLatin1String(state == Qt::Checked     ? "on"
                                 : state == Qt::Unchecked ? "off"
                                                          : "mixed");
        };
        QCOMPARE(QStringList({name(g.first), name(g.second), name(g.parent)}).join(' '), states);
        // Clearing for a volume leaves the parent three-state; its next click still turns the
        // group on, as the 1VP rows show.
        if (!clicks.contains(QLatin1Char('V')))
            QCOMPARE(g.parent->isTristate(), g.parent->checkState() == Qt::PartiallyChecked);
    }

    void tables_data() {
        QTest::addColumn<QStringList>("folders");
        QTest::addColumn<bool>("sleUsable");
        QTest::addColumn<bool>("extraUsable");
        QTest::addColumn<QString>("destination");

        QTest::newRow("Extra and S/L/E")
            << QStringList{"Extra/Extensions", "System/Library/Extensions"} << true << true
            << "inExtra";
        QTest::newRow("KextStore only")
            << QStringList{"Extra/KextStore"} << false << true << "inExtra";
        QTest::newRow("S/L/E only")
            << QStringList{"System/Library/Extensions"} << true << false << "inSLE";
        QTest::newRow("neither") << QStringList{"Extra", "System/Library"} << false << false
                                 << "none";
    }

    void tables() {
        QFETCH(QStringList, folders);
        QFETCH(bool, sleUsable);
        QFETCH(bool, extraUsable);
        QFETCH(QString, destination);

        WindowFixture f;
        addVolume(f, QStringLiteral("Mac HD"), folders);
        for (const char *name : {"cbExtra", "cbERP", "cbERM", "cbSLE", "cbSLERP", "cbSLERC"})
            f.find<QCheckBox>(name)->setChecked(true);
        f.find<QRadioButton>("inDesktop")->setChecked(true);

        f.delegate->DiskSelectorMaintenance(f.find<QComboBox>("DiskSelMain"));

        QCOMPARE(f.delegate->rp, f.paths.volumeRoot(QStringLiteral("Mac HD")));
        for (const char *name :
             {"cbSLE", "cbSLERP", "cbSLERC", "inSLE", "cbExtra", "cbERP", "cbERM", "inExtra"}) {
            const bool usable = QByteArray(name).contains("SLE") ? sleUsable : extraUsable;
            auto *box = f.find<QAbstractButton>(name);
            QVERIFY2(box->isEnabled() == usable, name);
            // Ticked options stay ticked where they apply and are cleared where they don't.
            QVERIFY2(qobject_cast<QRadioButton *>(box) || box->isChecked() == usable, name);
        }
        QCOMPARE(f.find<QAction>("MI_HideExtra")->isEnabled(), extraUsable);
        QCOMPARE(f.find<QAction>("MI_ShowExtra")->isEnabled(), extraUsable);
        QCOMPARE(::destination(f), destination);
    }

    // Each popup moves the other; a running maintenance keeps its popup disabled, while the
    // desktop destination's disabling ends with a choice on the maintenance page.
    void popupsFollowEachOther() {
        WindowFixture f;
        addVolume(f, QStringLiteral("One"), {"System/Library/Extensions"});
        addVolume(f, QStringLiteral("Two's disk"), {"Extra/Extensions"});
        auto *main = f.find<QComboBox>("DiskSelMain");
        auto *inst = f.find<QComboBox>("DiskSelInst");
        main->setEnabled(false);
        inst->setCurrentIndex(1);
        emit inst->activated(1);
        QCOMPARE(main->currentText(), QStringLiteral("Two's disk"));
        QVERIFY(!main->isEnabled());
        QCOMPARE(f.delegate->rp, f.paths.volumesDir() + QStringLiteral("/Two's disk"));
        QCOMPARE(::destination(f), QStringLiteral("inExtra"));

        main->setEnabled(true);
        inst->setEnabled(false);
        main->setCurrentIndex(0);
        emit main->activated(0);
        QCOMPARE(inst->currentText(), QStringLiteral("One"));
        QVERIFY(inst->isEnabled());
        QCOMPARE(::destination(f), QStringLiteral("inSLE"));
    }

    // The version menu shows the chosen volume's version folders, whichever popup chose it;
    // re-evaluating without a popup (after a task) leaves it alone.
    void versionMenuFollowsChosenVolume() {
        WindowFixture f;
        addVolume(f, QStringLiteral("HD"), {"Extra/10.5", "Extra/10.7/Extensions"});
        addVolume(f, QStringLiteral("Plain"), {"Extra/Extensions"});
        f.find<QAction>("MI_Ver105")->setChecked(true);
        f.find<QAction>("MI_VerIndpd")->setChecked(false);

        f.delegate->DiskSelectorMaintenance(f.find<QComboBox>("DiskSelMain"));
        const QList<bool> hd{false, true, false, true, true};
        QCOMPARE(versionItemsVisible(f), hd);
        QVERIFY(f.find<QAction>("MI_VerIndpd")->isChecked());
        QVERIFY(!f.find<QAction>("MI_Ver105")->isChecked());

        f.delegate->DiskSelectorMaintenance(nullptr);
        f.find<QComboBox>("DiskSelInst")->setCurrentIndex(1);
        f.delegate->DiskSelectorInstallation(nullptr);
        QCOMPARE(versionItemsVisible(f), hd);
        f.delegate->DiskSelectorInstallation(f.find<QComboBox>("DiskSelInst"));
        QCOMPARE(versionItemsVisible(f), QList<bool>(5, false));
    }

    // The start-up steps begin once the window's first frame is painted, and the disk
    // tool's answers (which volume is the started system) are awaited off the UI thread:
    // the window stays live meanwhile, and the steps after the volume list wait for it.
    void startUpLeavesTheWindowLive() {
        WindowFixture f;
        QSignalSpy frame(f.window.get(), &MainWindow::firstFrameShown);
        f.window->show();
        QTRY_COMPARE(frame.count(), 1);

        f.makeVolume(QStringLiteral("One"), {"System/Library/Extensions"});
        f.makeVolume(QStringLiteral("Two"), {"Extra"});
        QSemaphore answer;
        f.test.services.setStartedSystemCheck([&answer](const QString &) {
            answer.tryAcquire(1, 5000);
            return false;
        });
        QSignalSpy launched(f.delegate.get(), &TovrelAppDelegate::launched);
        f.delegate->applicationDidFinishLaunching();
        QCOMPARE(f.window->selectedToolbarItem(), QStringLiteral("ti_m"));
        QCOMPARE(launched.count(), 0);
        QCOMPARE(f.find<QComboBox>("DiskSelMain")->count(), 0);
        answer.release(2);
        QTRY_COMPARE(launched.count(), 1);
        QCOMPARE(f.find<QComboBox>("DiskSelMain")->count(), 2);
        QCOMPARE(frame.count(), 1);
    }

    // At start-up the version items and their spacer show only the shown volume's folders.
    void versionMenuAtStartUp_data() {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QList<bool>>("visible"); // 10.4 .. 10.7, spacer
        QTest::newRow("no version folder")
            << QString("Extra/Extensions") << QList<bool>{false, false, false, false, false};
        QTest::newRow("10.6") << QString("Extra/10.6")
                              << QList<bool>{false, false, true, false, true};
    }
    void versionMenuAtStartUp() {
        QFETCH(QString, folder);
        QFETCH(QList<bool>, visible);
        WindowFixture f;
        f.makeVolume(QStringLiteral("HD"), {folder});
        f.launch();
        QCOMPARE(versionItemsVisible(f), visible);
    }

    // A system image that can't be read, and no copy of ours, leaves no image at all: no
    // toolbar picture, no sheet icon. The copies we ship stand in wherever the system's are
    // missing, and the system's own file wins where there is one.
    void missingImages() {
        WindowFixture f;
        const QString dfa = "/Applications/Utilities/Disk Utility.app/Contents/Resources/DFA.icns";
        QImage red(16, 16, QImage::Format_RGB32);
        red.fill(Qt::red);
        QDir().mkpath(QFileInfo(f.paths.system(dfa)).path());
        QVERIFY(red.save(f.paths.system(dfa), "PNG"));
        const SystemImages none(f.paths, f.dir.filePath(QStringLiteral("no copies")));
        ToolbarIcons::applySystem(*f.window, none);
        QCOMPARE(f.window->action("ti_m")->icon().pixmap(16, 16).toImage().pixel(8, 8),
                 red.pixel(8, 8));
        for (const char *id : {"ti_i", "ti_u"})
            QVERIFY2(f.window->action(QLatin1String(id))->icon().isNull(), id);
        MessageBoxSheets(none).showSheet(SheetPresenter::Kind::Error, "Error", "x", f.window.get());
        QMessageBox *box = MessageBoxSheets::lastShown();
        QVERIFY(box && box->iconPixmap().isNull());
        QCOMPARE(box->icon(), QMessageBox::NoIcon);
        box->close();

        const SystemImages shipped(f.paths);
        ToolbarIcons::applySystem(*f.window, shipped);
        for (const char *id : {"ti_i", "ti_u"})
            QVERIFY2(!f.window->action(QLatin1String(id))->icon().isNull(), id);
        MessageBoxSheets(shipped).showSheet(SheetPresenter::Kind::Info, "Done", "x",
                                            f.window.get());
        QVERIFY(!MessageBoxSheets::lastShown()->iconPixmap().isNull());
        MessageBoxSheets::lastShown()->close();
    }

    void checkVer_data() {
        QTest::addColumn<QString>("item");
        QTest::addColumn<QString>("extraVer");
        QTest::addColumn<bool>("extraUsable");
        QTest::newRow("10.6 without kexts") << QString("MI_Ver106") << QString("10.6") << false;
        QTest::newRow("version independent") << QString("MI_VerIndpd") << QString() << true;
    }

    void checkVer() {
        QFETCH(QString, item);
        QFETCH(QString, extraVer);
        QFETCH(bool, extraUsable);

        WindowFixture f;
        addVolume(f, QStringLiteral("HD"),
                  {"Extra/Extensions", "Extra/10.6", "Extra/10.7/KextStore"});
        f.delegate->DiskSelectorMaintenance(f.find<QComboBox>("DiskSelMain"));
        f.delegate->ExtraVer = QStringLiteral("10.4");
        const QList<bool> visible = versionItemsVisible(f);

        f.window->action(item)->trigger();

        QCOMPARE(f.delegate->ExtraVer, extraVer);
        for (const char *name : {"MI_VerIndpd", "MI_Ver104", "MI_Ver105", "MI_Ver106", "MI_Ver107"})
            QVERIFY2(f.find<QAction>(name)->isChecked() == (item == QLatin1String(name)), name);
        QCOMPARE(f.find<QCheckBox>("cbERM")->isEnabled(), extraUsable);
        QCOMPARE(versionItemsVisible(f), visible);

        // Choosing the volume again marks "version independent" but keeps evaluating in the
        // version folder chosen before, until a version is chosen again.
        emit f.find<QComboBox>("DiskSelMain")->activated(0);
        QVERIFY(f.find<QAction>("MI_VerIndpd")->isChecked());
        QCOMPARE(f.delegate->ExtraVer, extraVer);
        QCOMPARE(f.find<QCheckBox>("cbERM")->isEnabled(), extraUsable);
    }

    // Only the desktop destination disables the volume popup; clicking the chosen destination
    // again keeps it chosen.
    // With the user's language German, the pages, labels and menus speak German; a
    // language without a translation of ours leaves the window English.
    void windowInGerman() {
        QVERIFY(!AppTranslator::install(*qApp, QLocale(QLocale::French)));
        QVERIFY(AppTranslator::install(*qApp, QLocale(QLocale::German, QLocale::Germany)));
        const auto english = qScopeGuard([] {
            for (QTranslator *translator : qApp->findChildren<QTranslator *>()) {
                QCoreApplication::removeTranslator(translator);
                delete translator;
            }
        });
        WindowFixture f;
        QCOMPARE(f.find<QTabWidget>("TBV")->tabText(0), QStringLiteral("Wartung"));
        QCOMPARE(f.find<QAbstractButton>("bMainButton")->text(), QStringLiteral("&Starten"));
        QCOMPARE(kkTr("Selected tasks were finished."),
                 QStringLiteral("Die ausgewählten Aufgaben wurden erledigt."));
    }

    void destinationActions() {
        WindowFixture f;
        addVolume(f, QStringLiteral("HD"), {"Extra/Extensions", "System/Library/Extensions"});
        f.delegate->DiskSelectorMaintenance(nullptr);
        for (const char *click : {"inDesktop", "inSLE", "inDesktop", "inExtra", "inExtra"}) {
            f.find<QRadioButton>(click)->click();
            QCOMPARE(::destination(f), QString::fromLatin1(click));
            QCOMPARE(f.find<QComboBox>("DiskSelInst")->isEnabled(),
                     qstrcmp(click, "inDesktop") != 0);
        }
    }

    // A wrong password keeps the dialog open with "Sorry, try again." until the right one
    // or Cancel (Escape once the typed passwords run out).
    void passwordDialogRetries_data() {
        QTest::addColumn<QStringList>("typed");
        QTest::addColumn<bool>("granted");
        QTest::newRow("wrong, then right") << QStringList{"guess", "secret"} << true;
        QTest::newRow("wrong, then cancelled") << QStringList{"guess"} << false;
    }

    void passwordDialogRetries() {
        QFETCH(QStringList, typed);
        QFETCH(bool, granted);
        QWidget window;
        PasswordDialog prompt(&window);
        QStringList checked, problems;
        QTimer user; // types into the dialog whenever it waits for a password
        connect(&user, &QTimer::timeout, this, [&] {
            QWidget *dialog = QApplication::activeModalWidget();
            auto *field = dialog ? dialog->findChild<QLineEdit *>("password") : nullptr;
            if (!field || !field->isEnabled())
                return;
            auto *problem = dialog->findChild<QLabel *>("problem");
            problems << (problem->isVisible() ? problem->text() : QString());
            if (typed.isEmpty())
                return QTest::keyClick(field, Qt::Key_Escape);
            field->setText(typed.takeFirst());
            QTest::keyClick(field, Qt::Key_Return);
        });
        user.start(20);
        QCOMPARE(prompt.askPassword("root",
                                    [&checked](const QString &password) {
                                        checked << password;
                                        return password == "secret"
                                                   ? PasswordPrompt::Verdict::Granted
                                                   : PasswordPrompt::Verdict::WrongPassword;
                                    }),
                 granted);
        QCOMPARE(checked, granted ? QStringList({"guess", "secret"}) : QStringList{"guess"});
        QCOMPARE(problems, QStringList({QString(), "Sorry, try again."}));
    }
};

QTEST_MAIN(TestWindow)
#include "tst_window.moc"

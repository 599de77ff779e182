#include "AppSettings.h"
#include "CliRun.h"
#include "DonationProbe.h"
#include "RecordingSheets.h"
#include "UpdateCheck.h"
#include "WindowFixture.h"
#include "exec/AdminAuthentication.h"
#include "exec/IconAlert.h"
#include "filesdrop.h"

#include <QAction>
#include <QComboBox>
#include <QDesktopServices>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>

namespace {
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

class UrlRecorder : public QObject {
    Q_OBJECT
public:
    QList<QUrl> opened;
public slots:
    void open(const QUrl &url) { opened << url; }
};

// Start-up: initial contents, volumes, settings, the update check, the donation probe and
// page, and the window-wide drop target.
class TestStartup : public QObject {
    Q_OBJECT
private slots:
    void volumeListAndPreselection_data();
    void volumeListAndPreselection();
    void settingToggledTwice_data();
    void settingToggledTwice();
    void checksAtStartup_data();
    void checksAtStartup();
    void appcastParsing_data();
    void appcastParsing();
    void dropDeliversLocalFilesOnly();
};

void TestStartup::volumeListAndPreselection_data() {
    QTest::addColumn<QStringList>("volumes"); // "title:folder" entries
    QTest::addColumn<QString>("started");
    QTest::addColumn<QStringList>("listed"); // sorted; the list keeps the folder's order
    QTest::addColumn<bool>("rootAsked");
    QTest::addColumn<QString>("selected"); // empty: the first listed

    QTest::newRow("started system among three")
        << QStringList{"A:Extra", "B HD:System/Library", "C:System/Library"} << "B HD"
        << QStringList{"A", "B HD", "C"} << true << "B HD";
    QTest::newRow("no started system")
        << QStringList{"A:Extra", "B:System/Library"} << "" << QStringList{"A", "B"} << true << "";
    QTest::newRow("one usable volume is never probed")
        << QStringList{"Photos:Pictures", "Mac HD:System/Library", "to_remove:Extra"} << "Mac HD"
        << QStringList{"Mac HD"} << false << "Mac HD";
}

// Also: the toolbar starts on maintenance whatever page was shown.
void TestStartup::volumeListAndPreselection() {
    QFETCH(QStringList, volumes);
    QFETCH(QString, started);
    QFETCH(QStringList, listed);
    QFETCH(bool, rootAsked);
    QFETCH(QString, selected);

    WindowFixture f;
    for (const QString &entry : volumes)
        f.makeVolume(entry.section(QLatin1Char(':'), 0, 0), {entry.section(QLatin1Char(':'), 1)});
    f.startedVolume = started;
    f.window->showPage(PageChecking);
    f.window->selectToolbarItem(QStringLiteral("ti_c"));
    f.delegate->applicationDidFinishLaunching();
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

void TestStartup::settingToggledTwice_data() {
    QTest::addColumn<QString>("item");
    QTest::addColumn<QString>("key");
    QTest::newRow("prelink kernel") << QString("MI_PrelinkKernel") << QString("Prelink Kernel");
    QTest::newRow("check at start-up") << QString("MI_checkatstart") << QString("SUCheckAtStartup");
}

void TestStartup::settingToggledTwice() {
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

void TestStartup::checksAtStartup_data() {
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

void TestStartup::checksAtStartup() {
    QFETCH(QString, settings);
    QFETCH(QStringList, versions);
    QFETCH(bool, donationPageThere);
    QFETCH(bool, entriesVisible);
    QFETCH(QStringList, sheets);

    WindowFixture f;
    const QString feed = f.dir.filePath("appcast.xml");
    // Any readable text will do as the donation page.
    const QString page = donationPageThere ? feed : f.dir.filePath("missing.html");
    QFile feedFile(feed);
    QVERIFY(feedFile.open(QIODevice::WriteOnly) && feedFile.write(appcast(versions)) > 0);
    feedFile.close();
    RecordingSheets shown;
    const auto alerts = [&f](SheetPresenter *presenter) {
        IconAlert::configureDefault(f.paths, AdminAuthentication::sharedInstance(),
                                    Alerts(nullptr, presenter));
    };
    alerts(&shown);
    const auto unhook = qScopeGuard([&] { alerts(nullptr); });
    QVERIFY(writePlist(f.paths.infoPlist(),
                       (settings + QStringLiteral("<key>SUFeedURL</key><string>%1</string>"
                                                  "<key>KKDonationURL</key><string>%2</string>")
                                       .arg(QUrl::fromLocalFile(feed).toString(),
                                            QUrl::fromLocalFile(page).toString()))
                           .toUtf8()));

    f.delegate->applicationDidFinishLaunching();
    const bool on = settings.contains(QLatin1String("<true/>"));
    QCOMPARE(f.window->action(QStringLiteral("MI_checkatstart"))->isChecked(), on);
    QCOMPARE(f.window->action(QStringLiteral("MI_PrelinkKernel"))->isChecked(), on);
    QTRY_VERIFY(f.delegate->findChildren<UpdateCheck *>().isEmpty() &&
                f.delegate->findChildren<DonationProbe *>().isEmpty());
    QCOMPARE(f.window->action(QStringLiteral("MI_Donate"))->isVisible(), entriesVisible);
    QCOMPARE(f.window->donateSpacer()->isVisible(), entriesVisible);
    QCOMPARE(shown.texts, sheets);

    // The menu entry opens the page the settings name.
    UrlRecorder recorder;
    QDesktopServices::setUrlHandler(QStringLiteral("file"), &recorder, "open");
    f.window->action(QStringLiteral("MI_Donate"))->trigger();
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
    QCOMPARE(recorder.opened, QList<QUrl>{QUrl::fromLocalFile(page)});
}

void TestStartup::appcastParsing_data() {
    QTest::addColumn<QByteArray>("feed");
    QTest::addColumn<QString>("release"); // "VERSION DOWNLOAD", empty for none

    QTest::newRow("version elements and link")
        << QByteArray("<rss xmlns:sparkle=\"x\"><channel><item><sparkle:version>3.1</"
                      "sparkle:version><link>https://example.org/get</link></item></channel></rss>")
        << "3.1 https://example.org/get";
    QTest::newRow("short version preferred over build number")
        << QByteArray("<rss xmlns:sparkle=\"x\"><channel><item><enclosure url=\"u\" "
                      "sparkle:version=\"512\" sparkle:shortVersionString=\"1.4\"/></item>"
                      "</channel></rss>")
        << "1.4 u";
    // The closing tags are missing: an item read before the error does not count.
    QTest::newRow("feed cut short") << appcast({"9.0"}).chopped(16) << QString();
}

void TestStartup::appcastParsing() {
    QFETCH(QByteArray, feed);
    QFETCH(QString, release);
    const auto newest = UpdateCheck::newestRelease(feed);
    QCOMPARE(newest ? newest->version + ' ' + newest->download.toString() : QString(), release);
}

// Local files reach the delegate in the order dropped; text and web links are not files.
void TestStartup::dropDeliversLocalFilesOnly() {
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

QTEST_MAIN(TestStartup)
#include "tst_startup.moc"

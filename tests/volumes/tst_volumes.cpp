#include "TestScripts.h"
#include "exec/AdminAuthentication.h"
#include "exec/IconAlert.h"
#include "volumes/DiskInfo.h"
#include "volumes/KextFolderLayout.h"
#include "volumes/VolumeList.h"

#include <QDirIterator>
#include <QTemporaryDir>
#include <QTest>

// The volume list, the kext folder layout and the started-system probe on real folder
// trees and real-format diskutil output.
class TestVolumes : public QObject {
    Q_OBJECT
private slots:
    void listKeepsUsableVolumes_data();
    void listKeepsUsableVolumes();
    void listFollowsFolderOrder();
    void listOfMissingFolderIsEmpty();
    void preselection_data();
    void preselection();
    void extraPresence_data();
    void extraPresence();
    void versionFolders();
    void diskInfo_data();
    void diskInfo();
    void isRootRunsDiskutil();
};

namespace {
void makeFolders(const QString &root, const QStringList &folders) {
    for (const QString &folder : folders)
        QDir().mkpath(root + QLatin1Char('/') + folder);
}

QByteArray fixture(const QString &name) {
    QFile file(QStringLiteral(KK_FIXTURES "/diskutil/") + name);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("missing fixture %s", qPrintable(name));
    return file.readAll();
}
} // namespace

void TestVolumes::listKeepsUsableVolumes_data() {
    QTest::addColumn<QString>("entry");
    QTest::addColumn<QStringList>("folders"); // below the entry; "FILE" makes it a file
    QTest::addColumn<bool>("listed");

    QTest::newRow("Extra only") << "Boot" << QStringList{"Extra"} << true;
    QTest::newRow("System/Library only") << "Mac HD" << QStringList{"System/Library"} << true;
    QTest::newRow("System without Library") << "Half" << QStringList{"System"} << false;
    QTest::newRow("data only") << "Photos" << QStringList{"Pictures", "extra"} << false;
    QTest::newRow("empty") << "Empty" << QStringList{} << false;
    QTest::newRow("hidden name") << ".Hidden Vol" << QStringList{"Extra"} << true;
    QTest::newRow("named like the marker") << "to_remove" << QStringList{"Extra"} << false;
    QTest::newRow("a plain file") << "notes.txt" << QStringList{"FILE"} << false;
}

void TestVolumes::listKeepsUsableVolumes() {
    QFETCH(QString, entry);
    QFETCH(QStringList, folders);
    QFETCH(bool, listed);

    QTemporaryDir dir;
    const QString volumes = dir.path() + QStringLiteral("/Volumes");
    makeFolders(volumes, {QStringLiteral("Reference/Extra")});
    if (folders == QStringList{QStringLiteral("FILE")}) {
        QFile file(volumes + QLatin1Char('/') + entry);
        QVERIFY(file.open(QIODevice::WriteOnly));
    } else {
        QDir().mkpath(volumes + QLatin1Char('/') + entry);
        makeFolders(volumes + QLatin1Char('/') + entry, folders);
    }

    const QStringList list = VolumeList::build(volumes);
    QCOMPARE(list.contains(entry), listed);
    QVERIFY(list.contains(QStringLiteral("Reference")));
    QCOMPARE(list.size(), listed ? 2 : 1);
}

void TestVolumes::listFollowsFolderOrder() {
    // Not sorted: the order is the folder's own, as a directory walk sees it.
    QTemporaryDir dir;
    const QString volumes = dir.path();
    for (const char *name : {"zeta", "Alpha", "mid dle", "beta", "Omega"})
        makeFolders(volumes, {QLatin1String(name) + QStringLiteral("/Extra")});
    makeFolders(volumes, {QStringLiteral("skipped/Documents")});
    QStringList walked;
    QDirIterator it(volumes, QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden);
    while (it.hasNext()) {
        it.next();
        if (it.fileName() != QLatin1String("skipped"))
            walked << it.fileName();
    }
    QCOMPARE(VolumeList::build(volumes), walked);
}

void TestVolumes::listOfMissingFolderIsEmpty() {
    QTemporaryDir dir;
    QVERIFY(VolumeList::build(dir.path() + QStringLiteral("/none")).isEmpty());
}

void TestVolumes::preselection_data() {
    QTest::addColumn<QStringList>("volumes");
    QTest::addColumn<QString>("started");
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("asked");

    QTest::newRow("one volume, not asked") << QStringList{"HD"} << "HD" << -1 << 0;
    QTest::newRow("second of three") << QStringList{"A", "B", "C"} << "B" << 1 << 2;
    QTest::newRow("first") << QStringList{"A", "B"} << "A" << 0 << 1;
    QTest::newRow("no started system") << QStringList{"A", "B", "C"} << "" << -1 << 3;
}

void TestVolumes::preselection() {
    QFETCH(QStringList, volumes);
    QFETCH(QString, started);
    QFETCH(int, index);
    QFETCH(int, asked);

    QStringList paths;
    const int chosen =
        VolumeList::preselection(volumes, QStringLiteral("/Volumes"), [&](const QString &path) {
            paths << path;
            return path == "/Volumes/" + started;
        });
    QCOMPARE(chosen, index);
    QCOMPARE(paths.size(), asked);
    for (int i = 0; i < paths.size(); ++i)
        QCOMPARE(paths.at(i), QStringLiteral("/Volumes/") + volumes.at(i));
}

void TestVolumes::extraPresence_data() {
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<QString>("version");
    QTest::addColumn<bool>("extra");
    QTest::addColumn<bool>("sle");

    QTest::newRow("Extensions") << QStringList{"Extra/Extensions"} << "" << true << false;
    QTest::newRow("KextStore only") << QStringList{"Extra/KextStore"} << "" << true << false;
    QTest::newRow("Extra without kext folders")
        << QStringList{"Extra/Themes"} << "" << false << false;
    QTest::newRow("version folder without kexts")
        << QStringList{"Extra/Extensions", "Extra/10.6"} << "10.6" << false << false;
    QTest::newRow("version folder with Extensions")
        << QStringList{"Extra/10.6/Extensions"} << "10.6" << true << false;
    QTest::newRow("S/L/E") << QStringList{"System/Library/Extensions"} << "" << false << true;
    QTest::newRow("nothing") << QStringList{} << "" << false << false;
}

void TestVolumes::extraPresence() {
    QFETCH(QStringList, folders);
    QFETCH(QString, version);
    QFETCH(bool, extra);
    QFETCH(bool, sle);

    QTemporaryDir dir;
    const QString rp = dir.path() + QStringLiteral("/Vol ume");
    QDir().mkpath(rp);
    makeFolders(rp, folders);
    QCOMPARE(KextFolderLayout::extraPresent(rp, version), extra);
    QCOMPARE(KextFolderLayout::slePresent(rp), sle);
    QCOMPARE(KextFolderLayout::extraBase(rp, version),
             version.isEmpty() ? rp + "/Extra" : rp + "/Extra/" + version);
}

void TestVolumes::versionFolders() {
    QTemporaryDir dir;
    makeFolders(dir.path(),
                {"Extra/10.5", "Extra/10.7/KextStore", "Extra/10.6.8", "Extra/10.5/10.4"});
    QCOMPARE(KextFolderLayout::versionFolders(dir.path()), (QList<bool>{false, true, false, true}));
}

void TestVolumes::diskInfo_data() {
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<bool>("startedSystem");

    QTest::newRow("started system") << fixture("info-startup.txt") << true;
    QTest::newRow("another volume") << fixture("info-other-volume.txt") << false;
    QTest::newRow("value one column further") << fixture("info-column-30.txt") << false;
    QTest::newRow("not mounted") << fixture("info-unmounted.txt") << false;
    QTest::newRow("trailing blanks") << QByteArray("   Mount Point:              /  \n") << false;
    QTest::newRow("only the first mount point counts")
        << QByteArray("   Mount Point:              /Volumes/X\n   Mount Point:              /\n")
        << false;
    QTest::newRow("short label line") << QByteArray("Mount Point:\n") << false;
    QTest::newRow("no output") << QByteArray() << false;
}

void TestVolumes::diskInfo() {
    QFETCH(QByteArray, output);
    QFETCH(bool, startedSystem);
    QCOMPARE(diskInfoIsStartedSystem(QString::fromUtf8(output)), startedSystem);
}

void TestVolumes::isRootRunsDiskutil() {
    // A stand-in diskutil below a sandbox root answers per volume, as the real one would.
    QTemporaryDir dir;
    const SystemPaths paths(dir.path());
    QDir().mkpath(paths.system(QStringLiteral("/usr/sbin")));
    QDir().mkpath(paths.volumeRoot(QStringLiteral("Mac HD")));
    const QByteArray startup = QByteArray(KK_FIXTURES) + "/diskutil/info-startup.txt";
    const QByteArray other = QByteArray(KK_FIXTURES) + "/diskutil/info-other-volume.txt";
    writeScript(QDir(paths.system(QStringLiteral("/usr/sbin"))), QStringLiteral("diskutil"),
                "[ \"$1\" = info ] || exit 1\ncase \"$2\" in\n  */Mac\\ HD) cat '" + startup +
                    "' ;;\n  */silent) ;;\n  *) cat '" + other + "' ;;\nesac\n");
    IconAlert alert(paths, AdminAuthentication::sharedInstance(), Alerts(nullptr, nullptr));
    QVERIFY(alert.isRoot(paths.volumeRoot(QStringLiteral("Mac HD"))));
    QVERIFY(!alert.isRoot(paths.volumeRoot(QStringLiteral("Other"))));
    QVERIFY(!alert.isRoot(paths.volumeRoot(QStringLiteral("silent"))));
    // Without the tool there is no answer, and so no started system.
    QFile::remove(paths.system(QStringLiteral("/usr/sbin/diskutil")));
    QVERIFY(!alert.isRoot(paths.volumeRoot(QStringLiteral("Mac HD"))));
}

QTEST_GUILESS_MAIN(TestVolumes)
#include "tst_volumes.moc"

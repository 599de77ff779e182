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
    void listKeepsUsableVolumes();
    void extraPresence_data();
    void extraPresence();
    void versionFolders();
    void diskInfo_data();
    void diskInfo();
    void isRootWithoutDiskutil();
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

// A volume is listed when it holds Extra or System/Library, whatever its name looks like;
// the list keeps the folder's own order, as a directory walk sees it, not a sorted one.
void TestVolumes::listKeepsUsableVolumes() {
    QTemporaryDir dir;
    const QString volumes = dir.path() + QStringLiteral("/Volumes");
    makeFolders(volumes, {"zeta/Extra", "Boot/Extra", "Mac HD/System/Library", "Alpha/Extra",
                          ".Hidden Vol/Extra", "Half/System", "Photos/Pictures", "Photos/extra",
                          "Empty", "to_remove/Extra"});
    QFile(volumes + QStringLiteral("/notes.txt")).open(QIODevice::WriteOnly);
    const QStringList usable{"zeta", "Boot", "Mac HD", "Alpha", ".Hidden Vol"};
    QStringList walked;
    QDirIterator it(volumes, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    while (it.hasNext()) {
        const QString name = it.nextFileInfo().fileName();
        if (usable.contains(name))
            walked << name;
    }
    QCOMPARE(walked.size(), usable.size());
    QCOMPARE(VolumeList::build(volumes), walked);
    QVERIFY(VolumeList::build(dir.path() + QStringLiteral("/none")).isEmpty());
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
}

void TestVolumes::extraPresence() {
    QFETCH(QStringList, folders);
    QFETCH(QString, version);
    QFETCH(bool, extra);
    QFETCH(bool, sle);

    QTemporaryDir dir;
    const QString rp = dir.path() + QStringLiteral("/Vol ume");
    makeFolders(rp, folders);
    QCOMPARE(KextFolderLayout::extraPresent(rp, version), extra);
    QCOMPARE(KextFolderLayout::slePresent(rp), sle);
}

// Which of 10.4 .. 10.7 have a folder in Extra, nested or look-alike names not counted.
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
    QTest::newRow("only the first mount point counts")
        << QByteArray("   Mount Point:              /Volumes/X\n   Mount Point:              /\n")
        << false;
}

void TestVolumes::diskInfo() {
    QFETCH(QByteArray, output);
    QFETCH(bool, startedSystem);
    QCOMPARE(diskInfoIsStartedSystem(QString::fromUtf8(output)), startedSystem);
}

// The started system is what diskutil says (run through the volumes verb's tests); without
// the tool there is no answer, and so no started system.
void TestVolumes::isRootWithoutDiskutil() {
    QTemporaryDir dir;
    const SystemPaths paths(dir.path());
    QDir().mkpath(paths.volumeRoot(QStringLiteral("Mac HD")));
    IconAlert alert(paths, AdminAuthentication::sharedInstance(), Alerts(nullptr, nullptr));
    QVERIFY(!alert.isRoot(paths.volumeRoot(QStringLiteral("Mac HD"))));
}

QTEST_GUILESS_MAIN(TestVolumes)
#include "tst_volumes.moc"

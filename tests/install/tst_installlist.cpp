#include "install/InstallList.h"

#include <QMimeData>
#include <QTest>
#include <QUrl>

// The install list as the table sees it: what a drop adds, the bundle names it
// installs under, and the refusal while an installation runs.
class TestInstallList : public QObject {
    Q_OBJECT
private slots:
    void dropFilter_data();
    void dropFilter();
    void bundleNameDropsFoldersAndTrailingSlashes();
    void dropAppendsAtEndUnlessInstalling();
};

namespace {
QMimeData *fileDrag(const QStringList &paths) {
    auto *data = new QMimeData;
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls << QUrl::fromLocalFile(path);
    data->setUrls(urls);
    return data;
}
} // namespace

void TestInstallList::dropFilter_data() {
    QTest::addColumn<QStringList>("dropped");
    QTest::addColumn<QStringList>("kept");
    QTest::newRow("all four types in drop order, a text file left out")
        << QStringList{"/u/d.ppp", "/u/c.plugin", "/u/notes.txt", "/u/b.bundle", "/u/a.kext"}
        << QStringList{"/u/d.ppp", "/u/c.plugin", "/u/b.bundle", "/u/a.kext"};
    QTest::newRow("upper-case extension is not taken")
        << QStringList{"/u/Driver.KEXT", "/u/X.Kext"} << QStringList{};
    QTest::newRow("only the last extension counts")
        << QStringList{"/u/A.kext.zip", "/u/B.zip.kext"} << QStringList{"/u/B.zip.kext"};
    QTest::newRow("the type without a name, or only in a folder above")
        << QStringList{"/u/kext", "/u/.kext", "/u/x.kext/Contents"} << QStringList{};
    QTest::newRow("trailing slash of a bundle folder and duplicates kept as delivered")
        << QStringList{"/u/A.kext/", "/u/A.kext/"} << QStringList{"/u/A.kext/", "/u/A.kext/"};
}

void TestInstallList::dropFilter() {
    QFETCH(QStringList, dropped);
    QFETCH(QStringList, kept);
    QCOMPARE(InstallList::dropFilter(dropped), kept);
}

void TestInstallList::bundleNameDropsFoldersAndTrailingSlashes() {
    QCOMPARE(InstallList::bundleName(QStringLiteral("/u/A.kext//")), QStringLiteral("A.kext"));
    QCOMPARE(InstallList::bundleName(QStringLiteral("A.kext")), QStringLiteral("A.kext"));
}

void TestInstallList::dropAppendsAtEndUnlessInstalling() {
    bool installing = true;
    InstallList list;
    list.setBusyCheck([&] { return installing; });
    list.append({QStringLiteral("/u/First.kext"), QStringLiteral("/u/Second.kext")});
    std::unique_ptr<QMimeData> data(
        fileDrag({QStringLiteral("/u/New.kext"), QStringLiteral("/u/readme.txt")}));
    QVERIFY(!list.canDropMimeData(data.get(), Qt::CopyAction, 0, 0, {}));
    QVERIFY(!list.dropMimeData(data.get(), Qt::CopyAction, 0, 0, list.index(0)));
    QCOMPARE(list.rowCount(), 2);

    installing = false;
    QVERIFY(list.canDropMimeData(data.get(), Qt::CopyAction, 0, 0, {}));
    QVERIFY(list.dropMimeData(data.get(), Qt::CopyAction, 0, 0, list.index(0)));
    QCOMPARE(list.entries(), (QStringList{"/u/First.kext", "/u/Second.kext", "/u/New.kext"}));

    // Something that is no list of files is not even offered a copy.
    QMimeData plain;
    plain.setText(QStringLiteral("/u/A.kext"));
    QVERIFY(!list.canDropMimeData(&plain, Qt::CopyAction, -1, -1, {}));
}

QTEST_GUILESS_MAIN(TestInstallList)
#include "tst_installlist.moc"

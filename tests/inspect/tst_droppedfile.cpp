#include "inspect/DroppedFile.h"

#include <QTest>

class TestDroppedFile : public QObject {
    Q_OBJECT
private slots:
    void dispatch_data() {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<int>("page");
        QTest::addColumn<int>("action");
        QTest::addColumn<QString>("path");
        const int none = int(DroppedFile::Action::None);
        const int list = int(DroppedFile::Action::ListMkext);
        const int check = int(DroppedFile::Action::CheckKext);
        QTest::newRow("mkext on unpack page")
            << QStringList{"/d/Extensions.mkext"} << 2 << list << "/d/Extensions.mkext";
        QTest::newRow("mkext on check page")
            << QStringList{"/d/Extensions.mkext"} << 3 << none << "/d/Extensions.mkext";
        QTest::newRow("kext on check page")
            << QStringList{"/d/It's Ä.kext"} << 3 << check << "/d/It's Ä.kext";
        QTest::newRow("kext on unpack page")
            << QStringList{"/d/A.kext"} << 2 << none << "/d/A.kext";
        QTest::newRow("first file decides")
            << QStringList{"/d/notes.txt", "/d/A.kext"} << 3 << none << "/d/notes.txt";
        QTest::newRow("upper-case extension")
            << QStringList{"/d/EXTENSIONS.MKEXT"} << 2 << none << "/d/EXTENSIONS.MKEXT";
        QTest::newRow("folder with final slash")
            << QStringList{"/d/A.kext/"} << 3 << check << "/d/A.kext";
        QTest::newRow("dot in a folder name only")
            << QStringList{"/d.kext/readme"} << 3 << none << "/d.kext/readme";
        QTest::newRow("nothing") << QStringList{} << 3 << none << QString();
    }

    void dispatch() {
        QFETCH(QStringList, files);
        QFETCH(int, page);
        QFETCH(int, action);
        QFETCH(QString, path);
        const DroppedFile drop(files, page);
        QCOMPARE(int(drop.action()), action);
        QCOMPARE(drop.path(), path);
    }
};

QTEST_GUILESS_MAIN(TestDroppedFile)
#include "tst_droppedfile.moc"

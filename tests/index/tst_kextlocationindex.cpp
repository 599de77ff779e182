#include "plist/PlistFile.h"
#include "volumes/KextLocationIndex.h"
#include "volumes/SystemPaths.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {
void writeFile(const QString &path, const QByteArray &bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

QByteArray plist(const QByteArray &body) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>" + body +
           "</dict></plist>\n";
}

QByteArray infoPlist(const QString &identifier) {
    return plist("<key>CFBundleIdentifier</key><string>" + identifier.toUtf8() +
                 "</string><key>CFBundleName</key><string>x</string>");
}

// A kext bundle with its Info.plist in Contents.
void makeKext(const QString &path, const QString &identifier) {
    writeFile(path + QStringLiteral("/Contents/Info.plist"), infoPlist(identifier));
}

QByteArray customDirs(const QStringList &dirs, const QByteArray &more = {}) {
    QByteArray body = "<key>Custom Kext Directories</key><array>";
    for (const QString &dir : dirs)
        body += "<string>" + dir.toUtf8() + "</string>";
    return plist(body + "</array>" + more);
}
} // namespace

class TestKextLocationIndex : public QObject {
    Q_OBJECT
private slots:
    void init() {
        m_dir = std::make_unique<QTemporaryDir>();
        QDir().mkpath(root() + "/Contents");
    }

    void indexesEveryEntry() {
        const QString folder = root() + "/Ext";
        makeKext(folder + "/A.kext", "com.example.a");
        writeFile(folder + "/.DS_Store", "junk");
        writeFile(folder + "/readme.txt", "hello");
        writeFile(folder + "/.hidden", "");
        writeFile(root() + "/plain", "x");

        KextLocationIndex index(settings());
        // A folder that is missing or a file adds nothing.
        index.FillLists(root() + "/missing");
        index.FillLists(root() + "/plain");
        QVERIFY(index.pathes().isEmpty());
        index.FillLists(folder);
        QCOMPARE(index.pathes().size(), 3);
        QCOMPARE(index.idbundles().size(), 3);
        const qsizetype a = index.pathes().indexOf(folder + "/A.kext");
        const qsizetype text = index.pathes().indexOf(folder + "/readme.txt");
        QVERIFY(a >= 0 && text >= 0 && index.pathes().contains(folder + "/.hidden"));
        QCOMPARE(index.idbundles().at(a), "com.example.a");
        QCOMPARE(index.idbundles().at(text), QString());
        // Only the whole identifier, with its case, finds the kext.
        QCOMPARE(index.FindPath("com.example.a"), folder + "/A.kext");
        QCOMPARE(index.FindPath("com.example.A"), QString());
        QCOMPARE(index.FindPath("com.example"), QString());
    }

    void identifiers_data() {
        QTest::addColumn<QString>("contentsPlist");
        QTest::addColumn<QString>("topPlist");
        QTest::addColumn<QString>("expected");
        const QString a = QString::fromUtf8(infoPlist("com.example.contents"));
        const QString b = QString::fromUtf8(infoPlist("com.example.top"));
        QTest::newRow("old style top level") << QString() << b << "com.example.top";
        QTest::newRow("contents first") << a << b << "com.example.contents";
        // A broken Contents/Info.plist does not fall back to the top-level one.
        QTest::newRow("malformed contents") << "<plist><dict><key>" << b << QString();
        QTest::newRow("no identifier")
            << QString::fromUtf8(plist("<key>CFBundleName</key><string>x</string>")) << QString()
            << QString();
        QTest::newRow("identifier not a string")
            << QString::fromUtf8(plist("<key>CFBundleIdentifier</key><integer>4</integer>"))
            << QString() << QString();
        QTest::newRow("array instead of dictionary")
            << "<?xml version=\"1.0\"?><plist version=\"1.0\"><array/></plist>" << QString()
            << QString();
        QTest::newRow("non-ASCII identifier")
            << QString::fromUtf8(infoPlist(QStringLiteral("com.exämple.ünï"))) << QString()
            << QStringLiteral("com.exämple.ünï");
    }

    void identifiers() {
        QFETCH(QString, contentsPlist);
        QFETCH(QString, topPlist);
        QFETCH(QString, expected);
        const QString kext = root() + "/Ext/It's A.kext";
        QDir().mkpath(kext);
        if (!contentsPlist.isNull())
            writeFile(kext + "/Contents/Info.plist", contentsPlist.toUtf8());
        if (!topPlist.isNull())
            writeFile(kext + "/Info.plist", topPlist.toUtf8());
        KextLocationIndex index(settings());
        index.FillLists(root() + "/Ext");
        QCOMPARE(index.pathes(), QStringList{kext});
        QCOMPARE(index.idbundles(), QStringList{expected});
    }

    void plugInsFollowTheirKext() {
        const QString folder = root() + "/Ext";
        const QString parent = folder + "/Parent.kext";
        makeKext(parent, "com.example.parent");
        makeKext(parent + "/Contents/Plugins/One.kext", "p.one");
        makeKext(parent + "/Contents/Plugins/Two.kext", "p.two");
        // A plug-in with plug-ins of its own, at the old top-level place.
        makeKext(parent + "/Contents/Plugins/One.kext/Plugins/Deep.kext", "p.deep");
        makeKext(folder + "/Sibling.kext", "com.example.sibling");
        makeKext(folder + "/Other.kext", "com.example.other");
        // Plug-ins that lead back to the scanned folder itself end the walk.
        QVERIFY(QFile::link(folder, folder + "/Other.kext/Contents/Plugins"));

        KextLocationIndex index(settings());
        index.FillLists(folder);
        const QStringList ids = index.idbundles();
        QCOMPARE(ids.size(), 6);
        // Whatever order the folder lists its kexts in, a kext's plug-ins (and theirs) come
        // right after it, before the next sibling.
        const qsizetype p = ids.indexOf("com.example.parent");
        const qsizetype one = ids.indexOf("p.one");
        const qsizetype two = ids.indexOf("p.two");
        const qsizetype deep = ids.indexOf("p.deep");
        QCOMPARE(QList<qsizetype>({one, two, deep}).count(-1), 0);
        QCOMPARE(std::min(one, two), p + 1);
        QCOMPARE(deep, one + 1);
        QCOMPARE(std::max({one, two, deep}), p + 3);
        QCOMPARE(index.pathes().at(deep), parent + "/Contents/Plugins/One.kext/Plugins/Deep.kext");
    }

    void plugInFolderNameIsLowerCase() {
        const QString folder = root() + "/Ext";
        makeKext(folder + "/A.kext", "a");
        makeKext(folder + "/A.kext/Contents/PlugIns/P.kext", "p");
        if (QFileInfo::exists(folder + "/A.kext/Contents/Plugins"))
            QSKIP("the temporary folder's file system ignores case");
        KextLocationIndex index(settings());
        index.FillLists(folder);
        QCOMPARE(index.idbundles(), QStringList{"a"});
    }

    void rebuildScansSystemFirst() {
        const SystemPaths paths(root(), root() + "/home", root() + "/Contents");
        const QString sle = root() + "/System/Library/Extensions";
        const QString extra = root() + "/Extra/Extensions";
        const QString store = root() + "/Extra/KextStore";
        const QString custom = root() + "/home/Desktop";
        makeKext(extra + "/Same.kext", "com.example.same");
        makeKext(sle + "/Same.kext", "com.example.same");
        makeKext(store + "/Stored.kext", "com.example.stored");
        makeKext(custom + "/Mine.kext", "com.example.mine");
        writeFile(settings(), customDirs({root() + "/gone", custom}));

        KextLocationIndex index(settings());
        index.FillLists(root() + "/Extra"); // stale entries from an earlier use
        index.rebuild(paths);
        QCOMPARE(index.pathes(), (QStringList{sle + "/Same.kext", extra + "/Same.kext",
                                              store + "/Stored.kext", custom + "/Mine.kext"}));
        QCOMPARE(index.FindPath("com.example.same"), sle + "/Same.kext");
        QCOMPARE(index.FindPath("com.example.mine"), custom + "/Mine.kext");
        // A custom folder that is gone is skipped but stays in the list.
        QCOMPARE(index.kextDirs().size(), 2);
    }

    void customFoldersLoadOnce() {
        KextLocationIndex index(settings());
        QCOMPARE(index.CountPathes(), 0u); // no file yet
        writeFile(settings(), plist("<key>Other</key><string>x</string>"));
        QCOMPARE(index.CountPathes(), 0u); // no key yet: asked again next time
        writeFile(settings(), customDirs({"/a b", "/c'd"}));
        // Nothing but CountPathes reads the file.
        index.InitLists();
        QVERIFY(index.kextDirs().isEmpty());
        QCOMPARE(index.CountPathes(), 2u);
        QCOMPARE(index.kextDirs(), (QStringList{"/a b", "/c'd"}));
        // Once loaded the list is not read again.
        writeFile(settings(), customDirs({"/x"}));
        QCOMPARE(index.CountPathes(), 2u);
        writeFile(settings(), "not a property list at all");
        QCOMPARE(KextLocationIndex(settings()).CountPathes(), 0u);
    }

    // The test load asks for the count first so that the saved folders are loaded and the
    // new one joins them instead of replacing them; other keys of the file stay, and its
    // folder is made when missing.
    void addKextPathSavesParentFolder() {
        const QString file = root() + "/fresh/config/CustomKextDirs.plist";
        writeFile(file, customDirs({"/saved"}, "<key>Other</key><string>kept</string>"));
        KextLocationIndex index(file);
        QCOMPARE(index.CountPathes(), 1u);
        const QString desktop = root() + QStringLiteral("/Dësk top");
        index.AddKextPath(desktop + "/It's.kext");
        index.AddKextPath(desktop + "/Second.kext/");
        index.AddKextPath("/saved/Y.kext");
        QCOMPARE(index.kextDirs(), (QStringList{"/saved", desktop}));

        // The file was written at once; a new run finds the folders again.
        KextLocationIndex nextRun(file);
        QCOMPARE(nextRun.CountPathes(), 2u);
        QCOMPARE(nextRun.PathAtId(1), desktop);
        const auto saved = PlistFile::readDictionary(file);
        QVERIFY(saved);
        QCOMPARE(PlistFile::string(*saved, "Other"), std::optional<QString>("kept"));

        QDir(root() + "/fresh").removeRecursively();
        index.AddKextPath("/a/B.kext");
        QCOMPARE(KextLocationIndex(file).CountPathes(), 3u);
    }

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    QString root() const { return m_dir->path(); }
    QString settings() const { return root() + "/Contents/CustomKextDirs.plist"; }
};

QTEST_GUILESS_MAIN(TestKextLocationIndex)
#include "tst_kextlocationindex.moc"

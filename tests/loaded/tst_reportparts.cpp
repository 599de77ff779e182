#include "loaded/ExtraKextTable.h"
#include "loaded/LoadedKextRows.h"
#include "loaded/ReportOverview.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QTemporaryDir>
#include <QTest>

// The pieces of the system report where their rules meet odd input; the whole report from
// real-format fixtures is compared byte for byte in tst_systemreport.
class TestReportParts : public QObject {
    Q_OBJECT
private slots:
    void defaultFileName_data();
    void defaultFileName();
    void overviewSections_data();
    void overviewSections();
    void extraTable_data();
    void extraTable();
    void rowHalves_data();
    void rowHalves();
    void loadedSection();
};

namespace {
QString fixture(const QString &name) {
    QFile file(QStringLiteral(KK_FIXTURES "/") + name);
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    return QString::fromUtf8(file.readAll());
}

QString blanks(int count) {
    return QString(count, QLatin1Char(' '));
}

void touch(const QString &path) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    file.open(QIODevice::WriteOnly);
}

const QString softwareHead = QStringLiteral("Software:\n\n    System Software Overview:\n");
const QString hardwareHead = QStringLiteral("Hardware:\n\n    Hardware Overview:\n");
} // namespace

void TestReportParts::defaultFileName_data() {
    QTest::addColumn<QString>("software");
    QTest::addColumn<QString>("expected");

    QTest::newRow("10.6 overview")
        << fixture("system_profiler/software-10.6.txt") << QStringLiteral("Jörg's Mac Pro");
    QTest::newRow("nothing printed") << ""
                                     << "";
    QTest::newRow("heading only") << softwareHead << "";
    QTest::newRow("fewer than six lines") << softwareHead + "\n      A: 1\n      B: 2\n"
                                          << "";
    QTest::newRow("short computer line") << softwareHead + "\n1\n2\n3\n4\n      Computer\n"
                                         << "";
}

void TestReportParts::defaultFileName() {
    QFETCH(QString, software);
    QFETCH(QString, expected);
    QCOMPARE(ReportOverview::defaultFileName(software), expected);
}

void TestReportParts::overviewSections_data() {
    QTest::addColumn<QString>("software");
    QTest::addColumn<QString>("hardware");
    QTest::addColumn<QString>("expected");

    // Six-blank runs go wherever they are, non-overlapping from the left.
    QTest::newRow("deeper indentation keeps the rest")
        << softwareHead + "\n" + blanks(6) + "A\n" + blanks(8) + "B\n" + blanks(12) + "C\n"
        << hardwareHead + "\n" + blanks(10) + "D: 1" + blanks(7) + "x\n"
        << "1. Software Info:\nA\n  B\nC\n2. Hardware Info:\n    D: 1 x\n";
    QTest::newRow("user name and uptime dropped by position")
        << softwareHead + "\n1\n2\n3\n4\n5\nuser\n7\n8\nuptime\n10\n"
        << hardwareHead << "1. Software Info:\n1\n2\n3\n4\n5\n7\n8\n10\n2. Hardware Info:";
    QTest::newRow("short software: no line to drop")
        << softwareHead + "\n1\n2\n"
        << ""
        << "1. Software Info:\n1\n2\n2. Hardware Info:";
    QTest::newRow("tools printed nothing") << ""
                                           << ""
                                           << "1. Software Info:2. Hardware Info:";
}

void TestReportParts::overviewSections() {
    QFETCH(QString, software);
    QFETCH(QString, hardware);
    QFETCH(QString, expected);
    QCOMPARE(ReportOverview::sections(software, hardware), expected);
}

void TestReportParts::extraTable_data() {
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("expected");

    const QString heading = QStringLiteral("3. /Extra Kexts:\n");
    const QString header = QStringLiteral("Kext Name:") + blanks(4) + QStringLiteral("Plugins:\n");
    QTest::newRow("no Extra folders") << QStringList() << heading + header;
    // Names wider than the header widen the column; the plug-in folder's own
    // .DS_Store is listed, only the top level drops it.
    QTest::newRow("KextStore with a long non-ASCII name")
        << QStringList{QStringLiteral(
                           "Extra/KextStore/Jörg's Audio.kext/Contents/PlugIns/.DS_Store"),
                       "Extra/KextStore/FakeSMC.kext/Contents/PlugIns/Sensor.kext/",
                       "Extra/KextStore/Null.kext/"}
        << heading + QStringLiteral("Kext Name:") + blanks(11) + "Plugins:\n" + "FakeSMC.kext" +
               blanks(9) + "Sensor.kext \n" + QStringLiteral("Jörg's Audio.kext") + blanks(4) +
               ".DS_Store \n" + "Null.kext" + blanks(12) + "\n";
    QTest::newRow("loose file beside the kexts, top-level .DS_Store dropped")
        << QStringList{"Extra/Extensions/readme.txt", "Extra/Extensions/.DS_Store"}
        << heading + header + "readme.txt" + blanks(4) + "\n";
}

void TestReportParts::extraTable() {
    QFETCH(QStringList, files);
    QFETCH(QString, expected);
    QTemporaryDir root;
    for (const QString &file : files) {
        if (file.endsWith(QLatin1Char('/')))
            QDir().mkpath(root.filePath(file));
        else
            touch(root.filePath(file));
    }
    const std::optional<QString> section = ExtraKextTable::section(SystemPaths(root.path()));
    QVERIFY(section);
    QCOMPARE(*section, expected);
}

void TestReportParts::rowHalves_data() {
    QTest::addColumn<QString>("listing");
    QTest::addColumn<QStringList>("firstNames");
    QTest::addColumn<QStringList>("secondNames");

    const QString listing = fixture("kextstat/kextstat-64bit.txt");
    // 8 pieces (header, six kexts, empty end): lines 1-3 and 4-6.
    QTest::newRow("six kexts") << listing
                               << QStringList{"Kext Name:", "com.apple.kpi.bsd",
                                              "com.apple.kpi.iokit", "com.apple.iokit.IOACPIFamily"}
                               << QStringList{"com.apple.driver.AppleACPIPlatform",
                                              "org.voodoo.driver.VoodooHDA", "com.example.NoLinks"};
    // 7 pieces: 7 / 2 = 3, so lines 1-2 and 3-5.
    const QString five = listing.section(QLatin1Char('\n'), 0, 5) + QLatin1Char('\n');
    QTest::newRow("five kexts") << five
                                << QStringList{"Kext Name:", "com.apple.kpi.bsd",
                                               "com.apple.kpi.iokit"}
                                << QStringList{"com.apple.iokit.IOACPIFamily",
                                               "com.apple.driver.AppleACPIPlatform",
                                               "org.voodoo.driver.VoodooHDA"};
    QTest::newRow("one kext") << listing.section(QLatin1Char('\n'), 0, 1) + QLatin1Char('\n')
                              << QStringList{"Kext Name:"} << QStringList{"com.apple.kpi.bsd"};
    QTest::newRow("nothing printed") << QString() << QStringList{"Kext Name:"} << QStringList();
}

void TestReportParts::rowHalves() {
    QFETCH(QString, listing);
    QFETCH(QStringList, firstNames);
    QFETCH(QStringList, secondNames);

    QStringList looked;
    const auto pathOf = [&looked](const QString &id) {
        looked << id;
        return id == QLatin1String("org.voodoo.driver.VoodooHDA")
                   ? QStringLiteral("/Extra/Extensions/VoodooHDA.kext")
                   : QString();
    };
    QStringList probed;
    const auto probe = [&probed](const QString &path) {
        probed << path;
        return QStringLiteral("Mach-O universal binary with 2 architectures");
    };
    const LoadedKextRows first =
        LoadedKextRows::build(listing, LoadedKextRows::Half::First, pathOf, probe);
    const LoadedKextRows second =
        LoadedKextRows::build(listing, LoadedKextRows::Half::Second, pathOf, probe);
    QCOMPARE(first.names, firstNames);
    QCOMPARE(second.names, secondNames);
    QCOMPARE(looked, firstNames.mid(1) + secondNames);
    for (const LoadedKextRows *rows : {&first, &second}) {
        QCOMPARE(rows->versions.size(), rows->names.size());
        QCOMPARE(rows->paths.size(), rows->names.size());
        QCOMPARE(rows->architectures.size(), rows->names.size());
    }
    // Only a kext with a known path costs a probe.
    const int voodoo = secondNames.indexOf(QStringLiteral("org.voodoo.driver.VoodooHDA"));
    QCOMPARE(probed.size(), voodoo < 0 ? 0 : 1);
    if (voodoo >= 0) {
        QCOMPARE(second.versions.at(voodoo), QStringLiteral("2.7.2"));
        QCOMPARE(second.architectures.at(voodoo), QStringLiteral("       ") + "     " + "     ");
    }
}

void TestReportParts::loadedSection() {
    LoadedKextRows first;
    first.names = QStringList{"Kext Name:", "com.a.Long.Identifier"};
    first.versions = QStringList{"Version:", "1.0"};
    first.paths = QStringList{"Path:", "/S/L/E/Long.kext"};
    first.architectures = QStringList{"Architectures:", "x86_64 i386      "};
    LoadedKextRows second;
    second.names = QStringList{"com.unknown"};
    second.versions = QStringList{"123.45.6789"};
    second.paths = QStringList{""};
    second.architectures = QStringList{""};

    // NW = 21, VW = 11, PW = 16; each of the first three columns is padded to width + 2.
    const QString expected = QStringLiteral("\n4. Loaded Kexts:\n") + "Kext Name:" + blanks(13) +
                             "Version:" + blanks(5) + "Path:" + blanks(13) + "Architectures:\n" +
                             "com.a.Long.Identifier" + blanks(2) + "1.0" + blanks(10) +
                             "/S/L/E/Long.kext" + blanks(2) + "x86_64 i386      \n" +
                             "com.unknown" + blanks(12) + "123.45.6789" + blanks(2) + blanks(18) +
                             "\n";
    QCOMPARE(LoadedKextRows::section(first, second), expected);
}

QTEST_GUILESS_MAIN(TestReportParts)
#include "tst_reportparts.moc"

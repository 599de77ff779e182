#include "loaded/KextStatText.h"
#include "loaded/LoadedKextList.h"

#include <QFile>
#include <QTest>

// The row rule over the kext status tool's listings, and the filter over its rows.
class TestKextStatText : public QObject {
    Q_OBJECT
private slots:
    void rows_data();
    void rows();
    void parts_data();
    void parts();
    void filter_data();
    void filter();
};

namespace {
QString fixture(const char *name) {
    QFile file(QStringLiteral(KK_FIXTURES "/kextstat/") + QLatin1String(name));
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    return QString::fromUtf8(file.readAll());
}

const QString header64 = QStringLiteral(
    "Index Refs Address            Size       Wired      Name (Version) <Linked Against>");
} // namespace

void TestKextStatText::rows_data() {
    QTest::addColumn<QString>("output");
    QTest::addColumn<QStringList>("expected");

    const QStringList rows64{QStringLiteral("com.apple.kpi.bsd (10.8.0)"),
                             QStringLiteral("com.apple.kpi.iokit (10.8.0)"),
                             QStringLiteral("com.apple.iokit.IOACPIFamily (1.3.0)"),
                             QStringLiteral("com.apple.driver.AppleACPIPlatform (1.3.6)"),
                             QStringLiteral("org.voodoo.driver.VoodooHDA (2.7.2)"),
                             QStringLiteral("com.example.NoLinks (1.0)")};
    const QString listing64 = fixture("kextstat-64bit.txt");
    QTest::newRow("64-bit kernel") << listing64 << rows64;
    QTest::newRow("64-bit, no final newline: the last kext is lost")
        << listing64.chopped(1) << rows64.first(5);
    QTest::newRow("32-bit kernel, narrower address column")
        << fixture("kextstat-32bit.txt")
        << QStringList{QStringLiteral("com.apple.kernel.6.0 (7.9.9)"),
                       QStringLiteral("com.apple.iokit.IOACPIFamily (1.2.0)"),
                       QStringLiteral("com.apple.driver.AppleIntelCPUPowerManagement (76.2.0)")};

    const QString pad(52, QLatin1Char(' '));
    QTest::newRow("only the first \" <\" cuts") << header64 + "\n" + pad + "a.b (1) <3> <4>\n"
                                                << QStringList{"a.b (1)"};
    QTest::newRow("line shorter than the column gives an empty row")
        << header64 + "\n    1    0\n" + pad + "c.d (2)\n"
        << QStringList{"", "c.d (2)"};
    QTest::newRow("unknown header: whole lines")
        << QStringLiteral("Id Name\n  1 a.b (1) <2>\n  2 c.d (2)\n")
        << QStringList{"  1 a.b (1)", "  2 c.d (2)"};
    QTest::newRow("non-ASCII identifier")
        << header64 + "\n" + pad + QStringLiteral("org.bücher.Kext (1.0ß) <1>\n")
        << QStringList{QStringLiteral("org.bücher.Kext (1.0ß)")};
    QTest::newRow("tool printed nothing") << QString() << QStringList();
    QTest::newRow("header alone") << header64 + "\n" << QStringList();
}

void TestKextStatText::rows() {
    QFETCH(QString, output);
    QFETCH(QStringList, expected);
    QCOMPARE(kextStatRows(output), expected);
}

void TestKextStatText::parts_data() {
    QTest::addColumn<QString>("row");
    QTest::addColumn<QString>("identifier");
    QTest::addColumn<QString>("version");

    QTest::newRow("usual") << "com.apple.kpi.bsd (10.8.0)"
                           << "com.apple.kpi.bsd"
                           << "10.8.0";
    QTest::newRow("no version") << "com.example.Bare"
                                << "com.example.Bare"
                                << "";
    QTest::newRow("version without closing parenthesis") << "com.example.Cut (1.2"
                                                         << "com.example.Cut"
                                                         << "1.2";
    QTest::newRow("parenthesis inside the identifier") << "com.ex)ample.Odd (3.0)"
                                                       << "com.ex)ample.Odd"
                                                       << "3.0";
    QTest::newRow("empty row") << ""
                               << ""
                               << "";
}

void TestKextStatText::parts() {
    QFETCH(QString, row);
    QFETCH(QString, identifier);
    QFETCH(QString, version);
    const KextRowParts parts = kextRowParts(row);
    QCOMPARE(parts.identifier, identifier);
    QCOMPARE(parts.version, version);
    QCOMPARE(kextRowIdentifier(row), identifier);
}

void TestKextStatText::filter_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("expected");

    QTest::newRow("empty text: every row")
        << ""
        << QStringList{
               "com.apple.kpi.bsd (10.8.0)",           "com.apple.kpi.iokit (10.8.0)",
               "com.apple.iokit.IOACPIFamily (1.3.0)", "com.apple.driver.AppleACPIPlatform (1.3.6)",
               "org.voodoo.driver.VoodooHDA (2.7.2)",  "com.example.NoLinks (1.0)"};
    QTest::newRow("capitals match small letters")
        << "IOKIT"
        << QStringList{"com.apple.kpi.iokit (10.8.0)", "com.apple.iokit.IOACPIFamily (1.3.0)"};
    QTest::newRow("version numbers match")
        << "2.7" << QStringList{"org.voodoo.driver.VoodooHDA (2.7.2)"};
    QTest::newRow("no wildcards") << "com.*HDA" << QStringList();
    QTest::newRow("linked indexes were cut off") << "<18" << QStringList();
}

void TestKextStatText::filter() {
    QFETCH(QString, text);
    QFETCH(QStringList, expected);
    LoadedKextList list;
    list.refresh(fixture("kextstat-64bit.txt"));
    QCOMPARE(list.filtered(text), expected);
    // The filter reads the last refresh and never changes it.
    QCOMPARE(list.rows().size(), 6);
}

QTEST_GUILESS_MAIN(TestKextStatText)
#include "tst_kextstattext.moc"

#include "MkextTestKexts.h"
#include "mkext/IOKitPlist.h"
#include "mkext/Lzss.h"
#include "mkext/ZlibCodec.h"

#include <QTest>

using MkextTestKexts::randomBytes;
using MkextTestKexts::xmlOf;

class TstMkextCodecs : public QObject {
    Q_OBJECT

private slots:
    // Streams written by hand from the coder's rules, so the decoder is checked against
    // the format rather than against our own encoder; a stream that does not give exactly
    // the declared size is refused.
    void lzssDecodesHandMadeStreams_data() {
        QTest::addColumn<QByteArray>("stream");
        QTest::addColumn<qsizetype>("declared");
        QTest::addColumn<QByteArray>("expected"); // null: refused
        // Flags 0x07: three literals, then a match at the ring's write start (4078 =
        // 0xfee) of 6 bytes that runs into the bytes it produces.
        const QByteArray abc = QByteArray::fromHex("07616263eef3");
        QTest::newRow("literals and overlapping match")
            << abc << qsizetype(9) << QByteArray("abcabcabc");
        // A match into the blank-filled ring before anything was written.
        QTest::newRow("match of preset blanks")
            << QByteArray::fromHex("000000") << qsizetype(3) << QByteArray("   ");
        // Nine items need a second flag byte; its bits are read from the lowest.
        QTest::newRow("second flag byte") << QByteArray::fromHex("ff") + QByteArray("12345678") +
                                                 QByteArray::fromHex("01") + QByteArray("9")
                                          << qsizetype(9) << QByteArray("123456789");
        QTest::newRow("declared larger than stream") << abc << qsizetype(10) << QByteArray();
        QTest::newRow("stream longer than declared") << abc << qsizetype(8) << QByteArray();
        QTest::newRow("match cut after one byte")
            << QByteArray::fromHex("0000") << qsizetype(3) << QByteArray();
        QTest::newRow("negative size") << abc << qsizetype(-1) << QByteArray();
    }
    void lzssDecodesHandMadeStreams() {
        QFETCH(QByteArray, stream);
        QFETCH(qsizetype, declared);
        QFETCH(QByteArray, expected);
        const std::optional<QByteArray> plain = Lzss::decompress(stream, declared);
        QCOMPARE(plain, expected.isNull() ? std::nullopt : std::optional(expected));
    }

    void lzssRoundTrip_data() {
        QTest::addColumn<QByteArray>("plain");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("leading blanks") << QByteArray(40, ' ') + "tail";
        QTest::newRow("longer than the ring") << (randomBytes(3000, 9) + randomBytes(3000, 9));
    }
    void lzssRoundTrip() {
        QFETCH(QByteArray, plain);
        const QByteArray packed = Lzss::compress(plain);
        QCOMPARE(Lzss::decompress(packed, plain.size()), std::optional(plain));
    }

    void zlibInflateIsBounded_data() {
        QTest::addColumn<QByteArray>("stream");
        QTest::addColumn<qsizetype>("declared");
        QTest::addColumn<bool>("accepted");
        const QByteArray zeros(1 << 20, '\0');
        const QByteArray bomb = ZlibCodec::deflate(zeros, 9);
        QTest::newRow("exact size") << bomb << qsizetype(zeros.size()) << true;
        QTest::newRow("inflates to more than declared") << bomb << qsizetype(4096) << false;
        QTest::newRow("inflates to less than declared")
            << bomb << qsizetype(zeros.size() + 1) << false;
        QTest::newRow("cut stream")
            << bomb.left(bomb.size() / 2) << qsizetype(zeros.size()) << false;
        QTest::newRow("not zlib") << QByteArray("plain text, not a stream") << qsizetype(10)
                                  << false;
        QTest::newRow("empty stream of empty data")
            << ZlibCodec::deflate(QByteArray()) << qsizetype(0) << true;
    }
    void zlibInflateIsBounded() {
        QFETCH(QByteArray, stream);
        QFETCH(qsizetype, declared);
        QFETCH(bool, accepted);
        const std::optional<QByteArray> plain = ZlibCodec::inflate(stream, declared);
        QCOMPARE(plain.has_value(), accepted);
        if (plain)
            QCOMPARE(plain->size(), declared);
    }

    void kernelDialectIsRead_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArray>("plainXmlBody");
        QTest::newRow("sizes, hex and shared objects")
            << QByteArray("<dict><key>A</key><string ID=\"1\">com.apple.kpi</string>"
                          "<key>B</key><integer size=\"32\">0x1f</integer>"
                          "<key>C</key><string IDREF=\"1\"/>"
                          "<key>D</key><array ID=\"2\"><true/><false/></array>"
                          "<key>E</key><array IDREF=\"2\"/>"
                          "<key>F</key><data>AAEC</data></dict>") +
                   QByteArray(1, '\0')
            << QByteArray("<dict>\n\t<key>A</key>\n\t<string>com.apple.kpi</string>\n"
                          "\t<key>B</key>\n\t<integer>31</integer>\n"
                          "\t<key>C</key>\n\t<string>com.apple.kpi</string>\n"
                          "\t<key>D</key>\n\t<array>\n\t\t<true/>\n\t\t<false/>\n\t</array>\n"
                          "\t<key>E</key>\n\t<array>\n\t\t<true/>\n\t\t<false/>\n\t</array>\n"
                          "\t<key>F</key>\n\t<data>\n\tAAEC\n\t</data>\n</dict>");
        QTest::newRow("regular Info.plist with doctype and wrapper")
            << QByteArray("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC "
                          "\"-//Apple//DTD PLIST 1.0//EN\" "
                          "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                          "<plist version=\"1.0\">\n<dict>\n  <key>N</key>\n  "
                          "<string>Drïver &amp; Co</string>\n  <key>V</key><integer>12</integer>"
                          "<key>S</key><set><string>x</string></set></dict>\n</plist>\n")
            << QByteArray("<dict>\n\t<key>N</key>\n\t<string>Drïver &amp; Co</string>\n"
                          "\t<key>V</key>\n\t<integer>12</integer>\n"
                          "\t<key>S</key>\n\t<array>\n\t\t<string>x</string>\n\t</array>\n"
                          "</dict>");
    }
    void kernelDialectIsRead() {
        QFETCH(QByteArray, text);
        QFETCH(QByteArray, plainXmlBody);
        const PlistPtr root = IOKitPlist::parse(text);
        QVERIFY(root);
        QVERIFY(xmlOf(root.get()).contains(plainXmlBody));
    }

    void malformedOrHostileTextIsRefused_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("unclosed dict") << QByteArray("<dict><key>A</key><string>x</string>");
        QTest::newRow("value without key") << QByteArray("<dict><string>x</string></dict>");
        QTest::newRow("key without value") << QByteArray("<dict><key>A</key></dict>");
        QTest::newRow("unknown reference") << QByteArray("<array><string IDREF=\"9\"/></array>");
        QTest::newRow("unknown element") << QByteArray("<dict><key>A</key><blob/></dict>");
        QTest::newRow("bad integer") << QByteArray("<integer size=\"32\">0xZZ</integer>");
        QTest::newRow("bad base64") << QByteArray("<data>!!!</data>");
        QTest::newRow("NUL inside") << QByteArray("<string>a\0b</string>", 20);
        QTest::newRow("declared entity")
            << QByteArray("<!DOCTYPE d [<!ENTITY x \"xxxxxxxx\">]><string>&x;&x;</string>");
        QTest::newRow("too deep") << QByteArray("<array>").repeated(200) +
                                         QByteArray("</array>").repeated(200);
        // Each level references the previous one twice: 2^40 nodes if copied blindly.
        QByteArray doubling("<array><array ID=\"0\"><true/></array>");
        for (int i = 1; i <= 40; ++i)
            doubling += QStringLiteral("<array ID=\"%1\"><array IDREF=\"%2\"/><array IDREF=\"%2\"/>"
                                       "</array>")
                            .arg(i)
                            .arg(i - 1)
                            .toLatin1();
        QTest::newRow("reference doubling") << doubling + "</array>";
    }
    void malformedOrHostileTextIsRefused() {
        QFETCH(QByteArray, text);
        QVERIFY(!IOKitPlist::parse(text));
    }

    // What we write reads back as the same tree, without the XML header the kernel's
    // reader does not want, and keeping 64-bit integers whole.
    void writtenTextReadsBackEqual_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("nested Info.plist") << QByteArray(
            "<dict><key>CFBundleIdentifier</key><string>com.example.&lt;ü&gt;</string>"
            "<key>IOKitPersonalities</key><dict><key>P</key><dict>"
            "<key>IOProbeScore</key><integer size=\"64\">0xffffffffffffffff</integer>"
            "<key>IOMatch</key><array><string>a</string><data>3q2+7w==</data></array>"
            "</dict></dict><key>OSBundleRequired</key><true/><key>Empty</key><dict/></dict>");
        QTest::newRow("lone boolean followed by junk") << QByteArray("<false/>k>");
    }
    void writtenTextReadsBackEqual() {
        QFETCH(QByteArray, text);
        const PlistPtr first = IOKitPlist::parse(text);
        QVERIFY(first);
        const QByteArray written = IOKitPlist::serialize(first.get());
        QVERIFY(!written.startsWith("<?xml"));
        if (text.contains("0xffffffffffffffff"))
            QVERIFY(written.contains("<integer size=\"64\">0xffffffffffffffff</integer>"));
        const PlistPtr second = IOKitPlist::parse(written);
        QVERIFY(second);
        QCOMPARE(xmlOf(second.get()), xmlOf(first.get()));
    }
};

QTEST_GUILESS_MAIN(TstMkextCodecs)
#include "tst_mkextcodecs.moc"

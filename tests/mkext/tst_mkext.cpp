#include "CliRun.h"
#include "mkext/BundleNamer.h"
#include "mkext/IOKitPlist.h"
#include "mkext/KextCollector.h"
#include "mkext/Lzss.h"
#include "mkext/MkextArchive.h"
#include "mkext/MkextBuiltinTool.h"
#include "mkext/MkextWriter.h"
#include "mkext/ZlibCodec.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>
#include <QThreadPool>
#include <QtEndian>
#include <cstdlib>
#include <fcntl.h>
#include <plist/plist.h>
#include <sys/stat.h>
#include <zlib.h>

namespace {

// Test material written from the formats' own rules, independent of the code under
// test: Mach-O files, kext folders, and raw archive surgery.

constexpr uint32_t I386 = 7;
constexpr uint32_t X86_64 = 0x01000007;
constexpr uint32_t PPC = 18;

// Big-endian word access.
uint32_t word(const QByteArray &bytes, qsizetype at) {
    return qFromBigEndian<quint32>(bytes.constData() + at);
}
void setWord(QByteArray &bytes, qsizetype at, uint32_t value) {
    qToBigEndian<quint32>(value, bytes.data() + at);
}

// A thin Mach-O header for `cputype` (little-endian for Intel, big for ppc), then `payload`.
QByteArray thinMachO(uint32_t cputype, const QByteArray &payload) {
    const bool is64 = cputype & 0x01000000;
    const uint32_t magic = is64 ? 0xfeedfacf : 0xfeedface;
    const uint32_t subtype = (cputype & 0xffffff) == I386 ? 3 : 0;
    const uint32_t fields[] = {magic, cputype, subtype, is64 ? 11u : 1u, 0, 0, 0, 0};
    QByteArray out(is64 ? 32 : 28, '\0');
    for (int i = 0; i < out.size() / 4; ++i)
        (cputype & 0xffffff) == PPC ? qToBigEndian<quint32>(fields[i], out.data() + 4 * i)
                                    : qToLittleEndian<quint32>(fields[i], out.data() + 4 * i);
    return out + payload;
}

// A universal file of the thin files, each at a 4096-byte boundary.
QByteArray fatMachO(const QList<QPair<uint32_t, QByteArray>> &slices) {
    QByteArray out(8 + 20 * slices.size(), '\0');
    setWord(out, 0, 0xcafebabe);
    setWord(out, 4, uint32_t(slices.size()));
    for (qsizetype i = 0; i < slices.size(); ++i) {
        out.append((4096 - out.size() % 4096) % 4096, '\0');
        const qsizetype at = 8 + 20 * i;
        setWord(out, at, slices[i].first);
        setWord(out, at + 4, (slices[i].first & 0xffffff) == I386 ? 3 : 0);
        setWord(out, at + 8, uint32_t(out.size()));
        setWord(out, at + 12, uint32_t(slices[i].second.size()));
        setWord(out, at + 16, 12);
        out.append(slices[i].second);
    }
    return out;
}

QByteArray randomBytes(qsizetype size, quint32 seed) {
    QRandomGenerator generator(seed);
    QByteArray bytes(size, Qt::Uninitialized);
    for (char &c : bytes)
        c = char(generator.bounded(256));
    return bytes;
}

bool writeFile(const QString &path, const QByteArray &bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

QByteArray readFile(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// An Info.plist with the identifier, the version, the executable's name unless that is
// empty, and `extraXml` (key/value pairs).
QByteArray infoPlist(const QString &identifier, const QString &version, const QString &executable,
                     const QString &extraXml = QString()) {
    QString xml =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC "
        "\"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
        "<plist version=\"1.0\">\n<dict>\n"
        "<key>CFBundleIdentifier</key><string>" +
        identifier + "</string><key>CFBundleVersion</key><string>" + version + "</string>";
    if (!executable.isEmpty())
        xml += "<key>CFBundleExecutable</key><string>" + executable.toHtmlEscaped() + "</string>";
    return (xml + extraXml + "</dict>\n</plist>\n").toUtf8();
}

// Writes <folder>/<name>.kext with that Info.plist and, when `executable` is not null, the
// executable file. Returns the bundle path.
QString writeKext(const QString &folder, const QString &name, const QString &identifier,
                  const QString &version, const QByteArray &executable,
                  const QString &extraXml = QString()) {
    const QString bundle = folder + '/' + name + ".kext";
    writeFile(bundle + "/Contents/Info.plist",
              infoPlist(identifier, version, executable.isNull() ? QString() : name, extraXml));
    if (!executable.isNull())
        writeFile(bundle + "/Contents/MacOS/" + name, executable);
    return bundle;
}

// A fresh length and checksum for the archive at `base`.
void reseal(QByteArray &bytes, qsizetype base = 0) {
    const qsizetype length = bytes.size() - base;
    setWord(bytes, base + 8, uint32_t(length));
    const auto *summed = reinterpret_cast<const Bytef *>(bytes.constData() + base + 16);
    setWord(bytes, base + 12, uint32_t(adler32(adler32(0, Z_NULL, 0), summed, uInt(length - 16))));
}

// A tree, or the Info.plist of a bundle, as libplist's XML (key order kept), for
// comparisons.
QByteArray xmlOf(plist_t node) {
    char *xml = nullptr;
    uint32_t length = 0;
    plist_to_xml(node, &xml, &length);
    QByteArray text(xml, qsizetype(length));
    free(xml);
    return text;
}
QByteArray infoXml(const QString &plistPath) {
    const QByteArray bytes = readFile(plistPath);
    plist_t root = nullptr;
    plist_from_memory(bytes.constData(), uint32_t(bytes.size()), &root);
    if (!root)
        return QByteArray("unreadable");
    const QByteArray text = xmlOf(root);
    plist_free(root);
    return text;
}

// Every file below `folder`, relative, sorted.
QStringList tree(const QString &folder) {
    QStringList files;
    QDirIterator it(folder,
                    QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        files << QDir(folder).relativeFilePath(it.next());
    files.sort();
    return files;
}

// With KK_MKEXT_CORPUS set, every archive the tests make is also kept there: the seed
// corpus of the reader's fuzz target.
void keepForCorpus(const QString &name, const QByteArray &bytes) {
    const QString folder = qEnvironmentVariable("KK_MKEXT_CORPUS");
    if (!folder.isEmpty())
        writeFile(folder + '/' + name, bytes);
}

QString safeName(QString tag) {
    return tag.replace(QRegularExpression("[^A-Za-z0-9]+"), "-");
}

// A second-version archive of one kext whose names come straight from the archive.
QByteArray archiveWithNames(const QString &path, const QString &executable) {
    KextSource kext;
    kext.bundlePath = path;
    plist_t info = plist_new_dict();
    plist_dict_set_item(info, "CFBundleIdentifier", plist_new_string("com.example.hostile"));
    plist_dict_set_item(info, "CFBundleExecutable",
                        plist_new_string(executable.toUtf8().constData()));
    kext.info = std::shared_ptr<void>(info, plist_free);
    kext.hasExecutable = true;
    kext.executable = thinMachO(X86_64, "x");
    return MkextWriter::archive({kext}, X86_64);
}

// The first version, laid out by hand: header, one 32-byte record per kext, then the
// LZSS-packed (or stored) plists and executables.
struct OldKext {
    QByteArray plist;
    QByteArray executable;
    bool packed;
};

QByteArray firstVersionArchive(const QList<OldKext> &kexts, uint32_t cputype) {
    QByteArray out(32 + 32 * kexts.size(), '\0');
    // Length and checksum, the third and fourth words, are sealed last.
    const uint32_t header[] = {0x4D4B5854, 0x4D4F5358, 0, 0, 0x01008000, uint32_t(kexts.size()),
                               cputype,    3};
    for (int i = 0; i < 8; ++i)
        setWord(out, 4 * i, header[i]);
    auto place = [&out](qsizetype record, const QByteArray &data, bool packed) {
        if (data.isEmpty())
            return;
        const QByteArray stored = packed ? Lzss::compress(data) : data;
        setWord(out, record, uint32_t(out.size()));
        setWord(out, record + 4, packed ? uint32_t(stored.size()) : 0);
        setWord(out, record + 8, uint32_t(data.size()));
        setWord(out, record + 12, 1234567890);
        out.append(stored);
    };
    for (qsizetype i = 0; i < kexts.size(); ++i) {
        place(32 + 32 * i, kexts[i].plist, kexts[i].packed);
        place(32 + 32 * i + 16, kexts[i].executable, kexts[i].packed);
    }
    reseal(out);
    return out;
}

} // namespace

// The archive codecs and the built-in tool that builds, lists and unpacks archives.
class TstMkext : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    // The folder of the round trip: universal code, a codeless kext, a plug-in with code for
    // one processor only, a kext with only PowerPC code, and non-ASCII names.
    QString m_folder;
    QByteArray m_aIntel64, m_aIntel32, m_uIntel64, m_uIntel32, m_plugIntel64;
    QByteArray m_built; // fat, i386 then x86_64
    QString m_builtPath;

    QString path(const QString &name) const { return m_dir.filePath(name); }
    QByteArray thinSlice(int index) const {
        return m_built.mid(word(m_built, 8 + 20 * index + 8), word(m_built, 8 + 20 * index + 12));
    }

private slots:
    void initTestCase() {
        QVERIFY(m_dir.isValid());
        m_folder = path("Kexts");
        m_aIntel64 = thinMachO(X86_64, randomBytes(20000, 1)); // incompressible: stored
        m_aIntel32 = thinMachO(I386, randomBytes(9000, 2));
        m_uIntel64 = thinMachO(X86_64, QByteArray(30000, 'k')); // compressible
        m_uIntel32 = thinMachO(I386, QByteArray("i386 code ").repeated(500));
        m_plugIntel64 = thinMachO(X86_64, randomBytes(4000, 3));
        writeKext(m_folder, "A Kext", "com.example.a", "1.0",
                  fatMachO({{X86_64, m_aIntel64}, {I386, m_aIntel32}}),
                  "<key>OSBundleLibraries</key><dict><key>com.apple.kpi.libkern</key>"
                  "<string>10.0</string></dict><key>Flag</key><true/><key>Count</key>"
                  "<integer>42</integer><key>Blob</key><data>AAECAwQ=</data>");
        writeKext(m_folder, "NoCode", "com.example.nocode", "2.0", QByteArray());
        writeKext(m_folder, "PPCOnly", "com.example.ppc", "0.1", thinMachO(PPC, "ppc"));
        const QString u = writeKext(m_folder, "Ünïcode Drïver's", "com.example.ü", "3.1",
                                    fatMachO({{I386, m_uIntel32}, {X86_64, m_uIntel64}}));
        writeKext(u + "/Contents/PlugIns", "Plug", "com.example.plug", "1", m_plugIntel64);
        m_builtPath = path("Extensions.mkext");
        const MkextToolOutput built = MkextBuiltinTool::build(m_builtPath, m_folder, {});
        QCOMPARE(built.err, QString());
        m_built = readFile(m_builtPath);
        keepForCorpus("sample-fat.mkext", m_built);
        keepForCorpus("sample-thin.mkext", thinSlice(0));
    }

    // Each decoder gives exactly the declared size or nothing. LZSS streams are written by
    // hand from the coder's rules, so the decoder is checked against the format rather than
    // against our own encoder; what our encoder writes must decode back.
    void decodingIsBoundedByTheDeclaredSize_data() {
        QTest::addColumn<bool>("zlib");
        QTest::addColumn<QByteArray>("stream");
        QTest::addColumn<qsizetype>("declared");
        QTest::addColumn<QByteArray>("expected"); // null: refused
        auto row = [](const char *tag, bool zlib, const QByteArray &stream, qsizetype declared,
                      const QByteArray &expected) {
            QTest::newRow(tag) << zlib << stream << declared << expected;
        };
        // Flags 0x07: three literals, then a match at the ring's write start (4078 =
        // 0xfee) of 6 bytes that runs into the bytes it produces.
        const QByteArray abc = QByteArray::fromHex("07616263eef3");
        row("lzss literals and overlapping match", false, abc, 9, "abcabcabc");
        // A match into the blank-filled ring before anything was written.
        row("lzss match of preset blanks", false, QByteArray::fromHex("000000"), 3, "   ");
        // Nine items need a second flag byte; its bits are read from the lowest.
        row("lzss second flag byte", false,
            QByteArray::fromHex("ff") + "12345678" + QByteArray::fromHex("01") + "9", 9,
            "123456789");
        row("lzss declared larger than stream", false, abc, 10, {});
        row("lzss stream longer than declared", false, abc, 8, {});
        row("lzss match cut after one byte", false, QByteArray::fromHex("0000"), 3, {});
        row("lzss negative size", false, abc, -1, {});
        for (const QByteArray &plain :
             {QByteArray(""), QByteArray(40, ' ') + "tail", randomBytes(3000, 9).repeated(2)})
            row(qPrintable("lzss round trip of " + QByteArray::number(plain.size())), false,
                Lzss::compress(plain), plain.size(), plain);
        const QByteArray zeros(1 << 20, '\0');
        const QByteArray bomb = ZlibCodec::deflate(zeros, 9);
        row("zlib exact size", true, bomb, zeros.size(), zeros);
        row("zlib inflates to more than declared", true, bomb, 4096, {});
        row("zlib inflates to less than declared", true, bomb, zeros.size() + 1, {});
        row("zlib cut stream", true, bomb.left(bomb.size() / 2), zeros.size(), {});
        row("zlib not a stream", true, "plain text, not a stream", 10, {});
        row("zlib empty stream of empty data", true, ZlibCodec::deflate(QByteArray()), 0, "");
    }
    void decodingIsBoundedByTheDeclaredSize() {
        QFETCH(bool, zlib);
        QFETCH(QByteArray, stream);
        QFETCH(qsizetype, declared);
        QFETCH(QByteArray, expected);
        const std::optional<QByteArray> plain =
            zlib ? ZlibCodec::inflate(stream, declared) : Lzss::decompress(stream, declared);
        QCOMPARE(plain, expected.isNull() ? std::nullopt : std::optional(expected));
    }

    // Large inputs are summed in parts on several threads; the parts must combine into
    // zlib's own sum of the whole, continued from a given sum.
    void checksumInPartsEqualsTheWhole() {
        const int threads = QThreadPool::globalInstance()->maxThreadCount();
        QThreadPool::globalInstance()->setMaxThreadCount(3);
        const QByteArray data = randomBytes((qsizetype(7) << 20) + 4, 4);
        const auto bytes = [](const char *text) { return reinterpret_cast<const Bytef *>(text); };
        const uLong start = adler32(adler32(0, Z_NULL, 0), bytes("head"), 4);
        const uLong whole = adler32_z(start, bytes(data.constData()), size_t(data.size()));
        QCOMPARE(ZlibCodec::adler32(data.constData(), data.size(), uint32_t(start)),
                 uint32_t(whole));
        QThreadPool::globalInstance()->setMaxThreadCount(threads);
    }

    // The kernel's dialect and regular Info.plists are read (the tree holds `plainXmlBody` in
    // libplist's XML), and what we write reads back as the same tree, without the XML header
    // the kernel's reader does not want and keeping 64-bit integers whole. Malformed or
    // hostile text is refused.
    void plistTextIsReadAndWritten_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArray>("plainXmlBody"); // null: refused
        auto refused = [](const char *tag, const QByteArray &text) {
            QTest::newRow(tag) << text << QByteArray();
        };
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
        QTest::newRow("nested Info.plist")
            << QByteArray(
                   "<dict><key>CFBundleIdentifier</key><string>com.example.&lt;ü&gt;</string>"
                   "<key>IOKitPersonalities</key><dict><key>P</key><dict>"
                   "<key>IOProbeScore</key><integer size=\"64\">0xffffffffffffffff</integer>"
                   "<key>IOMatch</key><array><string>a</string><data>3q2+7w==</data></array>"
                   "</dict></dict><key>OSBundleRequired</key><true/><key>Empty</key><dict/></dict>")
            << QByteArray("\t<key>Empty</key>\n\t<dict/>\n</dict>");
        QTest::newRow("lone boolean followed by junk")
            << QByteArray("<false/>k>") << QByteArray("<false/>");
        refused("empty", QByteArray());
        refused("unclosed dict", "<dict><key>A</key><string>x</string>");
        refused("value without key", "<dict><string>x</string></dict>");
        refused("key without value", "<dict><key>A</key></dict>");
        refused("unknown reference", "<array><string IDREF=\"9\"/></array>");
        refused("unknown element", "<dict><key>A</key><blob/></dict>");
        refused("bad integer", "<integer size=\"32\">0xZZ</integer>");
        refused("bad base64", "<data>!!!</data>");
        refused("NUL inside", QByteArray("<string>a\0b</string>", 20));
        refused("declared entity",
                "<!DOCTYPE d [<!ENTITY x \"xxxxxxxx\">]><string>&x;&x;</string>");
        refused("too deep",
                QByteArray("<array>").repeated(200) + QByteArray("</array>").repeated(200));
        // Each level references the previous one twice: 2^40 nodes if copied blindly.
        QByteArray doubling("<array><array ID=\"0\"><true/></array>");
        for (int i = 1; i <= 40; ++i)
            doubling += QStringLiteral("<array ID=\"%1\"><array IDREF=\"%2\"/><array IDREF=\"%2\"/>"
                                       "</array>")
                            .arg(i)
                            .arg(i - 1)
                            .toLatin1();
        refused("reference doubling", doubling + "</array>");
    }
    void plistTextIsReadAndWritten() {
        QFETCH(QByteArray, text);
        QFETCH(QByteArray, plainXmlBody);
        const PlistPtr first = IOKitPlist::parse(text);
        QCOMPARE(bool(first), !plainXmlBody.isNull());
        if (!first)
            return;
        QVERIFY(xmlOf(first.get()).contains(plainXmlBody));
        const QByteArray written = IOKitPlist::serialize(first.get());
        QVERIFY(!written.startsWith("<?xml"));
        if (text.contains("0xffffffffffffffff"))
            QVERIFY(written.contains("<integer size=\"64\">0xffffffffffffffff</integer>"));
        const PlistPtr second = IOKitPlist::parse(written);
        QVERIFY(second);
        QCOMPARE(xmlOf(second.get()), xmlOf(first.get()));
    }

    // The layout the kernel reads: a fat wrapper in the rebuild command's order, and per
    // processor a sealed second-version archive whose plist comes last. Executables are
    // deflated only where that shrinks them.
    void builtFileHasTheFormatsLayout() {
        QCOMPARE(word(m_built, 0), 0xcafebabeu);
        QCOMPARE(word(m_built, 4), 2u);
        const QList<uint32_t> cputypes{I386, X86_64};
        const QList<uint32_t> counts{3, 4}; // the plug-in has no i386 code
        for (int i = 0; i < 2; ++i) {
            const QByteArray thin = thinSlice(i);
            QCOMPARE(word(m_built, 8 + 20 * i), cputypes[i]);
            QCOMPARE(thin.left(8), QByteArray("MKXTMOSX"));
            QCOMPARE(word(thin, 8), uint32_t(thin.size()));
            QCOMPARE(word(thin, 16), 0x02002001u);
            QCOMPARE(word(thin, 20), counts[i]);
            QCOMPARE(word(thin, 24), cputypes[i]);
            QByteArray resealed = thin;
            reseal(resealed);
            QCOMPARE(word(thin, 12), word(resealed, 12));
            const uint32_t stored = word(thin, 36) ? word(thin, 36) : word(thin, 40);
            QCOMPARE(word(thin, 32) + stored, uint32_t(thin.size()));
        }
        const QByteArray thin = thinSlice(1);
        const MkextArchive::Opened opened = MkextArchive::open(thin, QString());
        QVERIFY2(opened.archive, qPrintable(opened.error));
        QStringList packed;
        for (const MkextArchive::Kext &kext : opened.archive->kexts())
            if (kext.hasExecutable && word(thin, kext.executableOffset) != 0)
                packed << MkextArchive::kextName(kext);
        QCOMPARE(packed, QStringList{"Ünïcode Drïver's"});
    }

    void listingShowsPathsIdentifiersAndVersions() {
        const MkextToolOutput listed = MkextBuiltinTool::list(m_builtPath);
        QCOMPARE(listed.err, QString());
        QCOMPARE(listed.status, 0);
        QCOMPARE(listed.out, QStringLiteral("Found 4 kexts:\n"
                                            "%1/A Kext.kext - com.example.a (1.0)\n"
                                            "%1/NoCode.kext - com.example.nocode (2.0)\n"
                                            "%1/Ünïcode Drïver's.kext - com.example.ü (3.1)\n"
                                            "%1/Ünïcode Drïver's.kext/Contents/PlugIns/Plug.kext - "
                                            "com.example.plug (1)\n")
                                 .arg(m_folder));
    }

    // Each row unpacks the architecture it is named after.
    void unpackGivesBackEachArchitecturesCode_data() {
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QList<QByteArray>>("code"); // per file under MacOS, in tree order
        auto bundle = [](const QString &name, bool code) {
            const QString k = name + QStringLiteral(".kext");
            QStringList files{k, k + "/Contents", k + "/Contents/Info.plist"};
            if (code)
                files << k + "/Contents/MacOS" << k + "/Contents/MacOS/" + name;
            return files;
        };
        const QStringList common = bundle("A Kext", true) + bundle("NoCode", false);
        const QStringList unicode = bundle("Ünïcode Drïver's", true);
        QTest::newRow("x86_64") << common + bundle("Plug", true) + unicode
                                << QList<QByteArray>{m_aIntel64, m_plugIntel64, m_uIntel64};
        QTest::newRow("i386") << common + unicode << QList<QByteArray>{m_aIntel32, m_uIntel32};
    }
    void unpackGivesBackEachArchitecturesCode() {
        const QString arch = QTest::currentDataTag();
        QFETCH(QStringList, files);
        QFETCH(QList<QByteArray>, code);
        const QString target = path("Unpacked " + arch);
        QDir().mkpath(target);
        const MkextToolOutput unpacked = MkextBuiltinTool::unpack(arch, target, m_builtPath);
        QCOMPARE(unpacked.err, QString());
        QCOMPARE(unpacked.out, QString());
        QCOMPARE(tree(target), files);
        QList<QByteArray> found;
        for (const QString &file : files)
            if (file.contains(QLatin1String("/MacOS/")))
                found << readFile(target + QLatin1Char('/') + file);
        QCOMPARE(found, code);
        QVERIFY(QFileInfo(target + "/A Kext.kext/Contents/MacOS/A Kext").isExecutable());
        // The dictionaries come back equal to the originals, key order included.
        for (const QString name : {"A Kext", "NoCode", "Ünïcode Drïver's"})
            QCOMPARE(infoXml(target + "/" + name + ".kext/Contents/Info.plist"),
                     infoXml(m_folder + "/" + name + ".kext/Contents/Info.plist"));
    }

    void buildReportsWhatItLeavesOut_data() {
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QStringList>("archs");
        QTest::addColumn<QString>("err");            // %1: the folder, %2: the archive
        QTest::addColumn<QList<uint32_t>>("slices"); // empty: no archive is written
        const QString mixed = path("Mixed");
        writeKext(mixed, "Good", "com.example.good", "1", thinMachO(I386, "c"));
        writeKext(mixed, "Broken", "com.example.broken", "1", "x");
        QVERIFY(QFile::remove(mixed + "/Broken.kext/Contents/MacOS/Broken"));
        QVERIFY(writeFile(mixed + "/Garbled.kext/Contents/Info.plist", "<plist><dict><key>"));
        // A fat wrapper even for one architecture.
        QTest::newRow("omitted kexts and an empty architecture")
            << mixed << QStringList{"x86_64", "i386"}
            << "%1/Broken.kext lacks its executable; omitting from mkext.\n"
               "%1/Garbled.kext has no readable Info.plist; omitting from mkext.\n"
               "No kexts found for architecture x86_64; skipping architecture.\n"
            << QList<uint32_t>{I386};
        QTest::newRow("missing folder")
            << path("no such folder") << QStringList() << "Can't read kext folder %1.\n"
            << QList<uint32_t>();
        QTest::newRow("unknown architecture")
            << m_folder << QStringList{"i386", "arm64"} << "Unknown architecture arm64.\n"
            << QList<uint32_t>();
        const QString onlyPPC = path("Only PPC");
        writeKext(onlyPPC, "P", "com.example.p", "1", thinMachO(PPC, "p"));
        QTest::newRow("no kexts for any architecture")
            << onlyPPC << QStringList{"x86_64"}
            << "No kexts found for architecture x86_64; skipping architecture.\n"
               "No kexts found; mkext %2 not created.\n"
            << QList<uint32_t>();
    }
    void buildReportsWhatItLeavesOut() {
        QFETCH(QString, folder);
        QFETCH(QStringList, archs);
        QFETCH(QString, err);
        QFETCH(QList<uint32_t>, slices);
        const QString out = path(safeName(QTest::currentDataTag()) + ".mkext");
        const MkextToolOutput built = MkextBuiltinTool::build(out, folder, archs);
        QCOMPARE(built.err, QString(err).replace("%1", folder).replace("%2", out));
        QCOMPARE(built.status, slices.isEmpty() ? 1 : 0);
        QCOMPARE(QFile::exists(out), !slices.isEmpty());
        const QByteArray bytes = readFile(out);
        for (qsizetype i = 0; i < slices.size(); ++i)
            QCOMPARE(word(bytes, 8 + 20 * i), slices[i]);
        if (!slices.isEmpty()) {
            QCOMPARE(word(bytes, 4), uint32_t(slices.size()));
            keepForCorpus("one-arch.mkext", bytes);
        }
    }

    void firstVersionArchiveIsListedAndUnpacked() {
        const QByteArray code = thinMachO(I386, QByteArray("old driver code ").repeated(64));
        const QByteArray archive = firstVersionArchive(
            {{infoPlist("com.example.old", "1.0", "OldDriver"), code, true},
             {infoPlist("com.example.codeless", "2.5", ""), QByteArray(), false},
             {infoPlist("com.example.stored", "3", "Stored"), thinMachO(I386, "s"), false}},
            I386);
        keepForCorpus("version1.mkext", archive);
        const QString file = path("old.mkext");
        QVERIFY(writeFile(file, archive));
        const MkextToolOutput listed = MkextBuiltinTool::list(file);
        QCOMPARE(listed.err, QString());
        QCOMPARE(listed.out, QStringLiteral("Found 3 kexts:\n"
                                            "OldDriver.kext - com.example.old (1.0)\n"
                                            "codeless.kext - com.example.codeless (2.5)\n"
                                            "Stored.kext - com.example.stored (3)\n"));
        const QString target = path("Old");
        QDir().mkpath(target);
        QCOMPARE(MkextBuiltinTool::unpack("i386", target, file).err, QString());
        QCOMPARE(readFile(target + "/OldDriver.kext/Contents/MacOS/OldDriver"), code);
        QCOMPARE(tree(target + "/codeless.kext"), (QStringList{"Contents", "Contents/Info.plist"}));
    }

    void brokenArchivesGiveTheToolsMessages_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("arch");
        QTest::addColumn<QString>("err");
        QTest::addColumn<bool>("listed"); // false: the listing fails with the same text
        const QString badMagic = "Bad mkext magic/signature.\n";
        const QByteArray thin = thinSlice(1); // x86_64
        const QString cant2 = "Can't read mkext2 archive.\n";
        auto row = [](const char *name, const QByteArray &bytes, const QString &arch,
                      const QString &err, bool listed = false) {
            QTest::newRow(name) << bytes << arch << err << listed;
            keepForCorpus("broken-" + safeName(name), bytes);
        };
        row("empty file", QByteArray(), "x86_64", badMagic);
        QByteArray magic = thin;
        magic[0] = 'm';
        row("wrong magic", magic, "x86_64", badMagic);
        QByteArray signature = thin;
        signature[7] = 'Y';
        row("wrong signature", signature, "x86_64", badMagic);
        row("truncated", thin.left(thin.size() - 10), "x86_64",
            QStringLiteral("Mkext length field %1 does not match mkext actual size %2.\n")
                .arg(thin.size())
                .arg(thin.size() - 10));
        QByteArray flipped = thin;
        flipped[100] = char(flipped[100] ^ 0x40);
        row("flipped byte", flipped, "x86_64", "Mkext checksum error.\n");
        row("missing architecture in fat file", m_built, "ppc",
            "Architecture ppc not found in mkext.\n", true);
        row("thin archive of another processor", thin, "i386",
            "Architecture i386 not found in mkext.\n", true);
        row("unknown architecture", thin, "arm64", "Unknown architecture arm64.\n", true);
        // One word changed; a thin archive is sealed again so that only the change is wrong.
        auto changed = [](QByteArray bytes, qsizetype at, uint32_t value, bool seal = true) {
            setWord(bytes, at, value);
            if (seal)
                reseal(bytes);
            return bytes;
        };
        row("unknown version", changed(thin, 16, 0x03000000), "x86_64",
            "Unsupported mkext version 0x03000000.\n");
        row("plist beyond the end", changed(thin, 32, uint32_t(thin.size())), "x86_64", cant2);
        row("plist claims 2 GiB", changed(thin, 40, 0x7fffffff), "x86_64", cant2);
        const QByteArray garbage = thin.left(word(thin, 32)) + QByteArray("<dict><key>x</key>");
        row("plist malformed", changed(changed(garbage, 36, 0), 40, 18), "x86_64", cant2);
        // A packed executable that claims to inflate to 200 MiB from ten bytes.
        const MkextArchive::Opened opened = MkextArchive::open(thin, QString());
        const quint32 plugEntry = opened.archive->kexts().at(2).executableOffset;
        row("executable claims to inflate to 200 MiB",
            changed(changed(thin, plugEntry, 10), plugEntry + 4, 200u << 20), "x86_64", cant2,
            true);
        row("fat slice beyond the end",
            changed(m_built, 8 + 20 + 8, uint32_t(m_built.size() + 4096), false), "x86_64",
            badMagic);
        row("fat count beyond the file", changed(m_built, 4, 0x10000000, false), "x86_64",
            badMagic);
        row("first version kext count beyond the file",
            changed(firstVersionArchive({{infoPlist("a", "1", "A"), "c", false}}, I386), 20,
                    0x08000000),
            "i386", "Can't read mkext1 archive.\n");
    }
    void brokenArchivesGiveTheToolsMessages() {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, arch);
        QFETCH(QString, err);
        QFETCH(bool, listed);
        const QString file = path("broken.mkext");
        QFile::remove(file);
        QVERIFY(writeFile(file, bytes));
        const MkextToolOutput listing = MkextBuiltinTool::list(file);
        QCOMPARE(listing.status, listed ? 0 : 1);
        if (!listed) {
            QCOMPARE(listing.err, err);
            QCOMPARE(listing.out, QString());
        }
        QTemporaryDir target;
        const MkextToolOutput unpacked = MkextBuiltinTool::unpack(arch, target.path(), file);
        QCOMPARE(unpacked.err, err);
        QCOMPARE(unpacked.status, 1);
    }

    void hostileNamesStayInsideTheFolder_data() {
        QTest::addColumn<QString>("bundlePath");
        QTest::addColumn<QString>("executable");
        QTest::addColumn<QString>("writtenExecutable");
        auto row = [](const char *tag, QString bundle, QString executable, QString written) {
            QTest::newRow(tag) << bundle << executable << written;
        };
        row("parent steps", "../../evil.kext", "evil", "evil.kext/Contents/MacOS/evil");
        row("absolute path", "/tmp/evil.kext", "../../../../tmp/x", "evil.kext/Contents/MacOS/x");
        row("empty path and executable", "", "", "hostile.kext/Contents/MacOS/hostile");
    }
    void hostileNamesStayInsideTheFolder() {
        QFETCH(QString, bundlePath);
        QFETCH(QString, executable);
        QFETCH(QString, writtenExecutable);
        QTemporaryDir outer;
        const QString target = outer.filePath("a/b");
        const QString file = outer.filePath("archive.mkext");
        QDir().mkpath(target);
        const QByteArray archive = archiveWithNames(bundlePath, executable);
        keepForCorpus("hostile-" + safeName(QTest::currentDataTag()), archive);
        QVERIFY(writeFile(file, archive));
        QCOMPARE(MkextBuiltinTool::unpack("x86_64", target, file).err, QString());
        QVERIFY2(tree(target).contains(writtenExecutable), qPrintable(tree(target).join(", ")));
        QCOMPARE(tree(outer.path()).size(), tree(target).size() + 3); // a, a/b, archive.mkext
    }

    void existingLinksAreNeverWrittenThrough() {
        QTemporaryDir outer;
        const QString target = outer.filePath("target");
        const QString elsewhere = outer.filePath("elsewhere");
        QDir().mkpath(target);
        QDir().mkpath(elsewhere);
        QVERIFY(QFile::link(elsewhere, target + "/evil.kext"));
        QVERIFY(QFile::link(outer.filePath("gone"), target + "/evil-1.kext"));
        QVERIFY(writeFile(target + "/evil-2.kext", "in the way"));
        const QString file = outer.filePath("a.mkext");
        QVERIFY(writeFile(file, archiveWithNames("/S/evil.kext", "evil")));
        QCOMPARE(MkextBuiltinTool::unpack("x86_64", target, file).err, QString());
        QVERIFY(QFile::exists(target + "/evil-3.kext/Contents/MacOS/evil"));
        QCOMPARE(readFile(target + "/evil-2.kext"), QByteArray("in the way"));
        QCOMPARE(tree(elsewhere), QStringList());
        QVERIFY(!QFile::exists(outer.filePath("gone")));
    }

    // Unpacking n kexts of which a tenth share one name looks at a number of paths that
    // grows linearly: ten times the kexts may cost at most twelve times the looks. The
    // folder already holds some of the numbered names, which are skipped, never reused.
    void unpackedNamesCostLinearWork() {
        const auto looks = [](int kexts) {
            QSet<QString> folder{"/f/Twin.kext", "/f/Twin-2.kext", "/f/Other-1.kext"};
            qsizetype count = 0;
            BundleNamer names("/f", [&](const QString &path) {
                ++count;
                return folder.contains(path);
            });
            for (int i = 0; i < kexts; ++i) {
                const QString name = i % 10 == 0 ? "Twin"
                                     : i % 2     ? "Other"
                                                 : "Kext" + QString::number(i);
                const QString given = "/f/" + names.next(name);
                if (folder.contains(given))
                    return qsizetype(-1);
                folder.insert(given);
            }
            return count;
        };
        const qsizetype small = looks(600);
        const qsizetype large = looks(6000);
        QVERIFY(small > 0 && large > 0);
        QVERIFY2(large <= 12 * small,
                 qPrintable(QString("%1 looks, then %2").arg(small).arg(large)));
    }

    void unpackIntoAMissingFolder() {
        const QString nowhere = path("no folder");
        QCOMPARE(MkextBuiltinTool::unpack("x86_64", nowhere, m_builtPath).err,
                 "Directory " + nowhere + " doesn't exist.\n");
    }

    // The verb's own layer on the real binary: its exit statuses and usage errors. What it
    // prints for a good archive runs end to end, through the sandbox's mkextunpack.
    void verbStatusAndErrors_data() {
        QTest::addColumn<QStringList>("args"); // after "mkext"
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("err"); // the start of standard error
        QTest::newRow("list of a missing file")
            << QStringList{"list", "/nonexistent/none.mkext"} << 1
            << "kextkeeper mkext: Can't open file /nonexistent/none.mkext.\n";
        const QString usage = "kextkeeper mkext: ";
        QTest::newRow("no action") << QStringList{} << 2 << usage;
        QTest::newRow("unknown action") << QStringList{"pack", "x"} << 2 << usage;
        QTest::newRow("unknown architecture")
            << QStringList{"unpack", "a.mkext", "--arch", "foo"} << 2
            << usage + "--arch must be one of x86_64, i386, ppc, ppc64\n"
                       "Try 'kextkeeper mkext --help'.\n";
        QTest::newRow("unpack with two files") << QStringList{"unpack", "a", "b"} << 2 << usage;
        QTest::newRow("build without folder") << QStringList{"build", "out.mkext"} << 2 << usage;
        QTest::newRow("arch without value")
            << QStringList{"build", "o", "f", "--arch"} << 2 << usage;
    }
    void verbStatusAndErrors() {
        QFETCH(QStringList, args);
        QFETCH(int, status);
        QFETCH(QString, err);
        const CliRun run = runKextKeeper(m_dir.path(), m_dir.path(), QStringList{"mkext"} + args);
        QVERIFY2(run.err.startsWith(err), qPrintable(run.err));
        QCOMPARE(run.out, QString());
        QCOMPARE(run.status, status);
    }

    // Like kextcache, the verb dates the archive one second after the newest folder it was
    // built from; a kext named on its own is no folder and does not count.
    void verbDatesTheArchiveAfterItsNewestFolder() {
        const QDateTime older = QDateTime::fromString("2011-03-04T05:06:07Z", Qt::ISODate);
        const QDateTime newer = older.addDays(300);
        const QString a = path("Older's");
        const QString b = path("Newer Ü");
        writeKext(a, "A", "com.example.older", "1", thinMachO(X86_64, "a"));
        const QString kext = writeKext(b, "B", "com.example.newer", "1", thinMachO(I386, "b"));
        for (const auto &[folder, time] :
             {std::pair{a, older}, std::pair{b, newer}, std::pair{kext, newer.addDays(1)}}) {
            const timespec stamp{time_t(time.toSecsSinceEpoch()), 0};
            const timespec times[2] = {stamp, stamp};
            QCOMPARE(::utimensat(AT_FDCWD, QFile::encodeName(folder).constData(), times, 0), 0);
        }
        const QString out = path("Dated.mkext");
        const CliRun run =
            runKextKeeper(m_dir.path(), m_dir.path(), {"mkext", "build", out, b, a, kext});
        QCOMPARE(run.err, QString());
        QFile archive(out);
        QVERIFY(archive.open(QIODevice::ReadOnly));
        QCOMPARE(archive.fileTime(QFileDevice::FileModificationTime), newer.addSecs(1));
        QCOMPARE(archive.fileTime(QFileDevice::FileAccessTime), newer.addSecs(1));
    }

    // A dry run says in comments what it would write or unpack, with the default
    // processors in the rebuild command's order, and writes nothing.
    void verbDryRun() {
        const QString out = path("Out's.mkext");
        const auto dryRun = [this](const QStringList &args) {
            return runKextKeeper(m_dir.path(), m_dir.path(),
                                 QStringList{"--dry-run", "mkext"} + args);
        };
        const CliRun build = dryRun({"build", out, m_dir.path()});
        QCOMPARE(build.out,
                 "# would write " + out + " from " + m_dir.path() + " for i386, x86_64\n");
        QCOMPARE(build.status, 0);
        const CliRun unpack = dryRun({"unpack", out, "--to", path("kexts")});
        QCOMPARE(unpack.out, "# would unpack " + out + " into " + path("kexts") + "\n");
        QVERIFY(!QFile::exists(out));
    }
};

QTEST_GUILESS_MAIN(TstMkext)
#include "tst_mkext.moc"

#include "CliRun.h"
#include "plist/PlistPrecheck.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>
#include <sys/stat.h>

namespace {
QByteArray nestedArrays(int depth) {
    return "<?xml version=\"1.0\"?>\n<plist version=\"1.0\"><dict><key>a</key>" +
           QByteArray("<array>").repeated(depth) + QByteArray("</array>").repeated(depth) +
           "</dict></plist>";
}

void appendWord(QByteArray &bytes, quint64 value, int size) {
    for (int shift = (size - 1) * 8; shift >= 0; shift -= 8)
        bytes += char((value >> shift) & 0xff);
}

// A binary list of `count` arrays, each holding `width` references to the next; the last
// holds none, or with `cycle` references the first.
QByteArray binaryArrays(int count, int width, bool cycle) {
    QByteArray bytes = "bplist00";
    QList<qsizetype> offsets;
    for (int i = 0; i < count; ++i) {
        offsets << bytes.size();
        const bool last = i == count - 1;
        const int refs = last && !cycle ? 0 : width;
        bytes += char(0xa0 | refs);
        for (int r = 0; r < refs; ++r)
            appendWord(bytes, last ? 0 : i + 1, 4);
    }
    const qsizetype table = bytes.size();
    for (qsizetype offset : offsets)
        appendWord(bytes, quint64(offset), 4);
    bytes += QByteArray(6, '\0') + char(4) + char(4);
    appendWord(bytes, quint64(count), 8);
    appendWord(bytes, 0, 8);
    appendWord(bytes, quint64(table), 8);
    return bytes;
}
} // namespace

// Files a user or a downloaded kext can plant where the program reads by itself: lists
// nested past any real one, named pipes and links to endless devices. Each is refused and
// every task that meets one ends, with a clear outcome.
class TestHostile : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_root, m_home;

    QString sandbox(const QString &path) const { return m_root + '/' + path; }
    void fifo(const QString &path) const {
        QDir().mkpath(QFileInfo(path).path());
        QVERIFY(::mkfifo(QFile::encodeName(path).constData(), 0644) == 0);
    }
    void write(const QString &path, const QByteArray &bytes) const {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }
    CliRun run(const QStringList &args) const { return runKextKeeper(m_root, m_home, args); }

private slots:
    void precheck_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<bool>("acceptable");
        // <plist> and <dict> hold the arrays.
        QTest::newRow("XML at the limit") << nestedArrays(62) << true;
        QTest::newRow("XML one deeper") << nestedArrays(63) << false;
        QTest::newRow("XML, tags in a comment and an attribute")
            << "<plist a=\"<array>\"><!--" + QByteArray("<array>").repeated(99) +
                   "--><dict/></plist>"
            << true;
        QTest::newRow("binary at the limit") << binaryArrays(63, 1, false) << true;
        QTest::newRow("binary one deeper") << binaryArrays(64, 1, false) << false;
        QTest::newRow("binary cycle") << binaryArrays(3, 1, true) << false;
        QTest::newRow("binary shared 2^40 times") << binaryArrays(40, 2, false) << false;
        QTest::newRow("binary table past the end") << binaryArrays(3, 1, false).chopped(1) << false;
        // libplist stops the program on an assertion when it reads such a string.
        QTest::newRow("XML NUL byte")
            << QByteArray("<plist><string>a\0b</string></plist>", 35) << false;
    }

    void precheck() {
        QFETCH(QByteArray, bytes);
        QFETCH(bool, acceptable);
        QCOMPARE(PlistPrecheck::acceptable(bytes), acceptable);
    }

    void tasksEndOverHostileFiles() {
        m_root = m_dir.filePath("mac");
        m_home = m_dir.filePath("home");
        QCOMPARE(runKextKeeper("/", m_home, {"sandbox", "create", m_root}).status, 0);
        QDir().mkpath(m_home + "/Desktop");
        const QString extra = sandbox("Extra/Extensions/");
        write(sandbox("System/Library/Extensions/Deep.kext/Contents/Info.plist"),
              nestedArrays(200000));
        write(sandbox("System/Library/Extensions/Nul.kext/Contents/Info.plist"),
              QByteArray("<plist><dict><key>CFBundleIdentifier</key><string>a\0b</string></dict>"
                         "</plist>",
                         77));
        fifo(extra + "Pipe.kext/Contents/Info.plist");
        QDir().mkpath(extra + "Zero.kext/Contents");
        QVERIFY(QFile::link("/dev/zero", extra + "Zero.kext/Contents/Info.plist"));
        write(extra + "PipeExec.kext/Contents/Info.plist",
              "<plist><dict><key>CFBundleIdentifier</key><string>org.test.PipeExec</string>"
              "<key>CFBundleExecutable</key><string>PipeExec</string></dict></plist>");
        fifo(extra + "PipeExec.kext/Contents/MacOS/PipeExec");
        write(m_home + "/Deep.kext/Contents/Info.plist", nestedArrays(200000));

        CliRun result = run({"report", m_home + "/report.txt"});
        QCOMPARE(result.status, 0);
        QVERIFY(QFileInfo(m_home + "/report.txt").size() > 0);

        result = run({"mkext", "build", m_home + "/out.mkext", extra});
        for (const char *why : {"Pipe.kext has an Info.plist that is not a regular file",
                                "Zero.kext has an Info.plist that is not a regular file",
                                "PipeExec.kext has an executable that is not a regular file"})
            QVERIFY2(result.err.contains(QLatin1String(why)), qPrintable(result.err));
        result = run({"mkext", "build", m_home + "/deep.mkext", m_home + "/Deep.kext"});
        QVERIFY2(result.err.contains("Deep.kext has an Info.plist that is nested too deeply"),
                 qPrintable(result.err));

        result = run({"check", extra + "PipeExec.kext"});
        QCOMPARE(result.out, "x86_64: no\ni386: no\nppc: no\nppc64: no\n");
        result = run({"maintain", "--volume", "Macintosh HD", "--rebuild-extra-mkext"});
        QVERIFY2(result.status == 0, qPrintable(result.err));
        result = run({"install", "--volume", "Macintosh HD", "--to", "sle", m_home + "/Deep.kext"});
        QVERIFY2(result.status == 0, qPrintable(result.err));
    }
};

QTEST_GUILESS_MAIN(TestHostile)
#include "tst_hostile.moc"

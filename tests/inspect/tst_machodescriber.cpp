#include "exec/ProcessRunner.h"
#include "inspect/MachODescriber.h"
#include "inspect/MachOWriter.h"

#include <QRegularExpression>
#include <QSet>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

using Slice = MachOWriter::Slice;

namespace {
QByteArray be32(uint32_t value) {
    QByteArray bytes(4, '\0');
    qToBigEndian(value, bytes.data());
    return bytes;
}

// The processor names a description mentions, whoever wrote it.
QSet<QString> architecturesIn(const QString &text) {
    static const QRegularExpression word(QStringLiteral("(x86_64|i386|ppc64|ppc)(?![0-9a-z_])"));
    QSet<QString> found;
    for (auto it = word.globalMatch(text); it.hasNext();)
        found.insert(it.next().captured(1));
    return found;
}
} // namespace

class TestMachODescriber : public QObject {
    Q_OBJECT
private slots:
    void thinFiles_data();
    void thinFiles();
    void universalFiles_data();
    void universalFiles();
    void notMachO_data();
    void notMachO();
    void readsFromDisk();
    void hostFileToolAgrees_data();
    void hostFileToolAgrees();
};

void TestMachODescriber::thinFiles_data() {
    QTest::addColumn<uint32_t>("cputype");
    QTest::addColumn<uint32_t>("filetype");
    QTest::addColumn<QString>("expected");
    QTest::newRow("i386 object") << uint32_t(MachOWriter::I386) << uint32_t(MachOWriter::Object)
                                 << "Mach-O object i386\n";
    QTest::newRow("x86_64 kext") << uint32_t(MachOWriter::X86_64)
                                 << uint32_t(MachOWriter::KextBundle)
                                 << "Mach-O 64-bit kext bundle x86_64\n";
    QTest::newRow("ppc object") << uint32_t(MachOWriter::PPC) << uint32_t(MachOWriter::Object)
                                << "Mach-O object ppc\n";
    QTest::newRow("ppc64 object") << uint32_t(MachOWriter::PPC64) << uint32_t(MachOWriter::Object)
                                  << "Mach-O 64-bit object ppc64\n";
    QTest::newRow("ppc bundle") << uint32_t(MachOWriter::PPC) << uint32_t(MachOWriter::Bundle)
                                << "Mach-O bundle ppc\n";
}

void TestMachODescriber::thinFiles() {
    QFETCH(uint32_t, cputype);
    QFETCH(uint32_t, filetype);
    QFETCH(QString, expected);
    const QByteArray bytes = MachOWriter::thin({cputype, filetype});
    QCOMPARE(MachODescriber::describeBytes(bytes, QStringLiteral("/x/Foo")), expected);
}

void TestMachODescriber::universalFiles_data() {
    QTest::addColumn<QList<Slice>>("slices");
    QTest::addColumn<QString>("expected");
    const QString path = QStringLiteral("/S/L/E/My Kext.kext/Contents/MacOS/My Kext");
    QTest::newRow("x86_64 and i386")
        << QList<Slice>{MachOWriter::kextSlice(MachOWriter::X86_64),
                        MachOWriter::kextSlice(MachOWriter::I386)}
        << "Mach-O universal binary with 2 architectures\n" + path +
               " (for architecture x86_64):\tMach-O 64-bit kext bundle x86_64\n" + path +
               " (for architecture i386):\tMach-O object i386\n";
    QTest::newRow("one slice") << QList<Slice>{MachOWriter::kextSlice(MachOWriter::I386)}
                               << "Mach-O universal binary with 1 architecture\n" + path +
                                      " (for architecture i386):\tMach-O object i386\n";
    QTest::newRow("four slices in file order")
        << QList<Slice>{{MachOWriter::PPC, MachOWriter::Object},
                        {MachOWriter::I386, MachOWriter::Object},
                        {MachOWriter::PPC64, MachOWriter::Object},
                        {MachOWriter::X86_64, MachOWriter::KextBundle}}
        << "Mach-O universal binary with 4 architectures\n" + path +
               " (for architecture ppc):\tMach-O object ppc\n" + path +
               " (for architecture i386):\tMach-O object i386\n" + path +
               " (for architecture ppc64):\tMach-O 64-bit object ppc64\n" + path +
               " (for architecture x86_64):\tMach-O 64-bit kext bundle x86_64\n";
    // The universal lines name the processor model when the slice is built for one.
    QTest::newRow("ppc7400 subtype") << QList<Slice>{{MachOWriter::PPC, MachOWriter::Bundle, 10}}
                                     << "Mach-O universal binary with 1 architecture\n" + path +
                                            " (for architecture ppc7400):\tMach-O bundle ppc\n";
}

void TestMachODescriber::universalFiles() {
    QFETCH(QList<Slice>, slices);
    QFETCH(QString, expected);
    const QString path = QStringLiteral("/S/L/E/My Kext.kext/Contents/MacOS/My Kext");
    QCOMPARE(MachODescriber::describeBytes(MachOWriter::fat(slices), path), expected);
}

void TestMachODescriber::notMachO_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("expected");
    const QByteArray thin = MachOWriter::thin(MachOWriter::kextSlice(MachOWriter::X86_64));
    const QByteArray fat = MachOWriter::fat(
        {MachOWriter::kextSlice(MachOWriter::X86_64), MachOWriter::kextSlice(MachOWriter::I386)});
    QTest::newRow("empty") << QByteArray() << QString();
    QTest::newRow("text") << QByteArray("#!/bin/sh\necho hello\n") << QString();
    QTest::newRow("garbage") << QByteArray("\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0a\x0b\x0c", 12)
                             << QString();
    QTest::newRow("magic only") << thin.left(4) << QString();
    QTest::newRow("thin cut in cputype") << thin.left(6) << QString();
    QTest::newRow("universal cut in its table") << fat.left(30) << QString();
    QTest::newRow("universal without slices") << be32(0xcafebabe) + be32(0) << QString();
    // A Java class file: same magic, the class version where the count would be.
    QTest::newRow("java class") << be32(0xcafebabe) + be32(50) + QByteArray(64, '\0') << QString();
    // The table is intact but the slices are missing: the tool calls their bytes data.
    QTest::newRow("universal cut before its slices")
        << fat.left(4096)
        << "Mach-O universal binary with 2 architectures\n"
           "/f (for architecture x86_64):\tdata\n"
           "/f (for architecture i386):\tdata\n";
}

void TestMachODescriber::notMachO() {
    QFETCH(QByteArray, bytes);
    QFETCH(QString, expected);
    QCOMPARE(MachODescriber::describeBytes(bytes, QStringLiteral("/f")), expected);
}

void TestMachODescriber::readsFromDisk() {
    QTemporaryDir dir;
    const QString path = dir.path() + QStringLiteral("/Ünïcode 'quoted'.kext/Contents/MacOS/X");
    QVERIFY(
        MachOWriter::write(path, MachOWriter::fat({MachOWriter::kextSlice(MachOWriter::I386)})));
    QCOMPARE(MachODescriber::describe(path), "Mach-O universal binary with 1 architecture\n" +
                                                 path +
                                                 " (for architecture i386):\tMach-O object i386\n");
    QCOMPARE(MachODescriber::describe(dir.path() + QStringLiteral("/missing")), QString());
    // A folder cannot be read as a file.
    QCOMPARE(MachODescriber::describe(dir.path()), QString());
}

void TestMachODescriber::hostFileToolAgrees_data() {
    QTest::addColumn<QList<Slice>>("slices");
    QTest::addColumn<bool>("universal");
    QTest::newRow("thin i386") << QList<Slice>{MachOWriter::kextSlice(MachOWriter::I386)} << false;
    QTest::newRow("thin ppc64") << QList<Slice>{MachOWriter::kextSlice(MachOWriter::PPC64)}
                                << false;
    QTest::newRow("fat ppc i386") << QList<Slice>{MachOWriter::kextSlice(MachOWriter::PPC),
                                                  MachOWriter::kextSlice(MachOWriter::I386)}
                                  << true;
}

// The host's file tool words things its own way, but it must see the same processors in
// the files we build; otherwise our writer (or our reading of the header) is wrong.
void TestMachODescriber::hostFileToolAgrees() {
    QFETCH(QList<Slice>, slices);
    QFETCH(bool, universal);
    const QString tool = QStandardPaths::findExecutable(QStringLiteral("file"));
    if (tool.isEmpty())
        QSKIP("no file tool on this host");
    QTemporaryDir dir;
    const QString path = dir.path() + QStringLiteral("/exe");
    QVERIFY(MachOWriter::write(path, universal ? MachOWriter::fat(slices)
                                               : MachOWriter::thin(slices.first())));
    const QString theirs = ProcessRunner::output(tool, {QStringLiteral("-b"), path}).value_or("");
    const QString ours = MachODescriber::describe(path);
    QVERIFY2(theirs.contains(QLatin1String("Mach-O")), qPrintable(theirs));
    QCOMPARE(architecturesIn(ours), architecturesIn(theirs));
}

QTEST_GUILESS_MAIN(TestMachODescriber)
#include "tst_machodescriber.moc"

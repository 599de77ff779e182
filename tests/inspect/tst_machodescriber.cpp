#include "exec/ProcessRunner.h"
#include "inspect/MachODescriber.h"
#include "inspect/MachOWriter.h"

#include <QRegularExpression>
#include <QSet>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

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

const QString kextPath = QStringLiteral("/S/L/E/My Kext.kext/Contents/MacOS/My Kext");
} // namespace

class TestMachODescriber : public QObject {
    Q_OBJECT
private slots:
    // Thin files in either byte order and width, universal ones slice by slice in file order;
    // anything cut short or not Mach-O at all is described as nothing.
    void describeBytes_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("expected");
        using W = MachOWriter;
        const QString &p = kextPath;
        QTest::newRow("thin i386 object")
            << W::thin({W::I386, W::Object}) << "Mach-O object i386\n";
        QTest::newRow("thin x86_64 kext")
            << W::thin(W::kextSlice(W::X86_64)) << "Mach-O 64-bit kext bundle x86_64\n";
        QTest::newRow("thin ppc64 object")
            << W::thin({W::PPC64, W::Object}) << "Mach-O 64-bit object ppc64\n";
        QTest::newRow("universal, one slice")
            << W::fat({W::kextSlice(W::I386)})
            << "Mach-O universal binary with 1 architecture\n" + p +
                   " (for architecture i386):\tMach-O object i386\n";
        QTest::newRow("universal, four slices in file order")
            << W::fat({{W::PPC, W::Object},
                       {W::I386, W::Object},
                       {W::PPC64, W::Object},
                       {W::X86_64, W::KextBundle}})
            << "Mach-O universal binary with 4 architectures\n" + p +
                   " (for architecture ppc):\tMach-O object ppc\n" + p +
                   " (for architecture i386):\tMach-O object i386\n" + p +
                   " (for architecture ppc64):\tMach-O 64-bit object ppc64\n" + p +
                   " (for architecture x86_64):\tMach-O 64-bit kext bundle x86_64\n";
        // The universal lines name the processor model when the slice is built for one.
        QTest::newRow("universal, ppc7400 subtype")
            << W::fat({{W::PPC, W::Bundle, 10}})
            << "Mach-O universal binary with 1 architecture\n" + p +
                   " (for architecture ppc7400):\tMach-O bundle ppc\n";

        const QByteArray thin = W::thin(W::kextSlice(W::X86_64));
        const QByteArray fat = W::fat({W::kextSlice(W::X86_64), W::kextSlice(W::I386)});
        QTest::newRow("empty") << QByteArray() << QString();
        QTest::newRow("garbage") << QByteArray("\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0a\x0b\x0c",
                                               12)
                                 << QString();
        QTest::newRow("thin cut in cputype") << thin.left(6) << QString();
        QTest::newRow("universal cut in its table") << fat.left(30) << QString();
        QTest::newRow("universal without slices") << be32(0xcafebabe) + be32(0) << QString();
        // A Java class file: same magic, the class version where the count would be.
        QTest::newRow("java class")
            << be32(0xcafebabe) + be32(50) + QByteArray(64, '\0') << QString();
        // The table is intact but the slices are missing: the tool calls their bytes data.
        QTest::newRow("universal cut before its slices")
            << fat.left(4096)
            << "Mach-O universal binary with 2 architectures\n" + p +
                   " (for architecture x86_64):\tdata\n" + p + " (for architecture i386):\tdata\n";
    }

    void describeBytes() {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, expected);
        QCOMPARE(MachODescriber::describeBytes(bytes, kextPath), expected);
    }

    void readsFromDisk() {
        QTemporaryDir dir;
        const QString path = dir.path() + QStringLiteral("/Ünïcode 'quoted'.kext/Contents/MacOS/X");
        QVERIFY(MachOWriter::write(path,
                                   MachOWriter::fat({MachOWriter::kextSlice(MachOWriter::I386)})));
        QCOMPARE(MachODescriber::describe(path),
                 "Mach-O universal binary with 1 architecture\n" + path +
                     " (for architecture i386):\tMach-O object i386\n");
        QCOMPARE(MachODescriber::describe(dir.path() + QStringLiteral("/missing")), QString());
    }

    void hostFileToolAgrees_data() {
        QTest::addColumn<QByteArray>("bytes");
        using W = MachOWriter;
        QTest::newRow("thin ppc64") << W::thin(W::kextSlice(W::PPC64));
        QTest::newRow("fat ppc i386") << W::fat({W::kextSlice(W::PPC), W::kextSlice(W::I386)});
    }

    // The host's file tool words things its own way, but it must see the same processors in
    // the files we build; otherwise our writer (or our reading of the header) is wrong.
    void hostFileToolAgrees() {
        QFETCH(QByteArray, bytes);
        const QString tool = QStandardPaths::findExecutable(QStringLiteral("file"));
        if (tool.isEmpty())
            QSKIP("no file tool on this host");
        QTemporaryDir dir;
        const QString path = dir.path() + QStringLiteral("/exe");
        QVERIFY(MachOWriter::write(path, bytes));
        const QString theirs =
            ProcessRunner::output(tool, {QStringLiteral("-b"), path}).value_or("");
        QVERIFY2(theirs.contains(QLatin1String("Mach-O")), qPrintable(theirs));
        QCOMPARE(architecturesIn(MachODescriber::describe(path)), architecturesIn(theirs));
    }
};

QTEST_GUILESS_MAIN(TestMachODescriber)
#include "tst_machodescriber.moc"

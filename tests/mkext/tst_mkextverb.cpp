#include "MkextTestKexts.h"
#include "maintenance/MkextRebuild.h"
#include "volumes/SystemPaths.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

using namespace MkextTestKexts;

namespace {

struct Run {
    int status = -1;
    QByteArray out;
    QByteArray err;
};

Run run(const QString &program, const QStringList &args) {
    QProcess process;
    process.setProgram(program);
    process.setArguments(args);
    process.start();
    process.waitForFinished(60000);
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

Run kextkeeper(const QStringList &args) {
    return run(QStringLiteral(KK_BINARY), args);
}

} // namespace

// The verb as the window's fallbacks and the sandbox run it: the real binary, its
// output streams and exit status.
class TstMkextVerb : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_folder;
    QString m_archive;

private slots:
    void initTestCase() {
        QVERIFY(m_dir.isValid());
        m_folder = m_dir.filePath(QStringLiteral("Extra/Extensions"));
        writeKext(m_folder, QStringLiteral("Net Drïver"), QStringLiteral("com.example.net"),
                  QStringLiteral("2.1"),
                  fatMachO({{X86_64, thinMachO(X86_64, "64")}, {I386, thinMachO(I386, "32")}}));
        m_archive = m_dir.filePath(QStringLiteral("Extra/Extensions.mkext"));
    }

    // The rebuild fallback's own command line must be one the verb accepts.
    void rebuildFallbackCommandBuildsTheArchive() {
        QTemporaryDir root; // no kextcache below it
        setKextkeeperExecutable(QStringLiteral(KK_BINARY));
        const Command command = mkextRebuildCommand(SystemPaths(root.path()), m_archive, m_folder);
        QCOMPARE(command.tool, QStringLiteral(KK_BINARY));
        const Run built = run(command.tool, command.args);
        QCOMPARE(built.err, QByteArray());
        QCOMPARE(built.status, 0);
        const QByteArray bytes = readFile(m_archive);
        QCOMPARE(word(bytes, 4), 2u);
        QCOMPARE(word(bytes, 8), I386);
        QCOMPARE(word(bytes, 28), X86_64);
    }

    void verbsPrintWhatTheToolsPrint_data() {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("out");
        QTest::addColumn<QString>("err");
        const QString list = QStringLiteral("Found 1 kexts:\n%1/Net Drïver.kext - com.example.net "
                                            "(2.1)\n")
                                 .arg(m_folder);
        QTest::newRow("list") << QStringList{"mkext", "list", m_archive} << 0 << list << "";
        QTest::newRow("unpack missing architecture")
            << QStringList{"mkext", "unpack", m_archive, "--arch", "ppc", "--to", m_dir.path()} << 1
            << ""
            << "Architecture ppc not found in mkext.\n";
        QTest::newRow("list of a missing file")
            << QStringList{"mkext", "list", m_dir.filePath("none.mkext")} << 1 << ""
            << QStringLiteral("Can't open file %1.\n").arg(m_dir.filePath("none.mkext"));
    }
    void verbsPrintWhatTheToolsPrint() {
        QFETCH(QStringList, args);
        QFETCH(int, status);
        QFETCH(QString, out);
        QFETCH(QString, err);
        const Run result = kextkeeper(args);
        QCOMPARE(QString::fromUtf8(result.err), err);
        QCOMPARE(QString::fromUtf8(result.out), out);
        QCOMPARE(result.status, status);
    }

    void unpackWritesIntoTheFolder() {
        const QString target = m_dir.filePath(QStringLiteral("Mkext Contents"));
        QDir().mkpath(target);
        const Run result =
            kextkeeper({"mkext", "unpack", m_archive, "--to", target, "--arch", "i386"});
        QCOMPARE(result.err, QByteArray());
        QCOMPARE(result.status, 0);
        QCOMPARE(readFile(target + QStringLiteral("/Net Drïver.kext/Contents/MacOS/Net Drïver")),
                 thinMachO(I386, "32"));
    }

    void badUsageExitsWithTwo_data() {
        QTest::addColumn<QStringList>("args");
        QTest::newRow("no action") << QStringList{"mkext"};
        QTest::newRow("unknown action") << QStringList{"mkext", "pack", "x"};
        QTest::newRow("list without file") << QStringList{"mkext", "list"};
        QTest::newRow("unpack with two files") << QStringList{"mkext", "unpack", "a", "b"};
        QTest::newRow("build without folder") << QStringList{"mkext", "build", "out.mkext"};
        QTest::newRow("arch without value") << QStringList{"mkext", "build", "o", "f", "--arch"};
    }
    void badUsageExitsWithTwo() {
        QFETCH(QStringList, args);
        const Run result = kextkeeper(args);
        QCOMPARE(result.status, 2);
        QVERIFY(result.err.startsWith("kextkeeper mkext: "));
    }
};

QTEST_GUILESS_MAIN(TstMkextVerb)
#include "tst_mkextverb.moc"

#include "CliRun.h"
#include "TestScripts.h"
#include "exec/Command.h"
#include "inspect/MachOWriter.h"
#include "volumes/SystemPaths.h"

#include <QTemporaryDir>
#include <QTest>

// `kextkeeper check` and `kextkeeper load` run as real processes over a sandbox root
// whose kextlibs, chown and kextload are scripts; a real load runs end to end elsewhere.
class TestCheckVerb : public QObject {
    Q_OBJECT
private slots:
    void init() {
        m_dir = std::make_unique<QTemporaryDir>();
        m_paths = std::make_unique<SystemPaths>(m_dir->filePath("root"));
        QDir().mkpath(m_paths->system("/usr/sbin"));
        QDir().mkpath(m_dir->filePath("home"));
        const QDir sbin(m_paths->system("/usr/sbin"));
        const QByteArray logFile = log().toUtf8();
        writeScript(
            sbin, "kextlibs",
            "echo 'For all architectures:' >&2\necho '    com.apple.kpi.libkern = 10.8.0'\n");
        writeScript(sbin, "chown", "echo \"chown $*\" >> '" + logFile + "'\n");
        writeScript(sbin, "kextload", "echo \"kextload $*\" >> '" + logFile + "'\n");
    }

    // The library tool's headings go to its standard error, which is not ours to judge.
    void check() {
        using W = MachOWriter;
        const QString fat =
            kext("It's Ü", W::fat({W::kextSlice(W::X86_64), W::kextSlice(W::I386)}));
        CliRun result = run({"check", fat});
        QCOMPARE(result.out, "x86_64: yes\ni386: yes\nppc: no\nppc64: no\n");
        QCOMPARE(result.status, 0);
        result = run({"check", kext("Ppc", W::thin(W::kextSlice(W::PPC))), "--deps"});
        QCOMPARE(result.out,
                 "x86_64: no\ni386: no\nppc: yes\nppc64: no\n    com.apple.kpi.libkern = 10.8.0\n");
        QCOMPARE(result.status, 0);
    }

    void usage_data() {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("status");
        QTest::newRow("check without kext") << QStringList{"check"} << 2;
        QTest::newRow("check unknown option") << QStringList{"check", "/a.kext", "--arch"} << 2;
        QTest::newRow("check missing kext") << QStringList{"check", "/nowhere/a.kext"} << 1;
        QTest::newRow("load missing kext") << QStringList{"load", "/nowhere/a.kext"} << 1;
    }

    void usage() {
        QFETCH(QStringList, args);
        QFETCH(int, status);
        const CliRun result = run(args);
        QCOMPARE(result.status, status);
        QVERIFY(!result.err.isEmpty());
        QCOMPARE(result.out, QString());
    }

    void loadDryRunChangesNothing() {
        const QString path =
            kext("Good", MachOWriter::thin(MachOWriter::kextSlice(MachOWriter::X86_64)));
        const CliRun result = run({"--dry-run", "load", path});
        QCOMPARE(result.err, QString());
        const Command chown{m_paths->system("/usr/sbin/chown"), {"-R", "0:0", path}};
        const Command load{"kextload", {path}};
        QCOMPARE(result.out, chown.toShellLine() + '\n' + load.toShellLine() + '\n');
        QCOMPARE(result.status, 0);
        QVERIFY(!QFileInfo::exists(log()));
        QVERIFY(
            !QFileInfo::exists(m_dir->filePath("home/.config/kextkeeper/CustomKextDirs.plist")));
    }

private:
    CliRun run(const QStringList &args) const {
        return runKextKeeper(m_paths->root(), m_dir->filePath("home"), args);
    }

    QString kext(const QString &name, const QByteArray &executable) const {
        const QString path = m_dir->filePath("Desk top/" + name + ".kext");
        MachOWriter::write(path + "/Contents/MacOS/" + name, executable);
        return path;
    }

    QString log() const { return m_dir->filePath("tools.log"); }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<SystemPaths> m_paths;
};

QTEST_GUILESS_MAIN(TestCheckVerb)
#include "tst_checkverb.moc"

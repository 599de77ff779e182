#include "FakeSudo.h"
#include "RecordingLog.h"
#include "ScriptedPrompt.h"
#include "exec/AdminAuthentication.h"
#include "exec/RootScript.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {
QByteArray readFile(const QString &path) {
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    return file.readAll();
}
} // namespace

class TestRootScript : public QObject {
    Q_OBJECT
private slots:
    void init();
    void scriptLine_data();
    void scriptLine();
    void run_data();
    void run();
    void refusedAuthorizationLeavesTheScript();

private:
    AdminAuthentication::Config directConfig() const {
        AdminAuthentication::Config config;
        config.direct = true;
        config.environment = {QStringLiteral("PATH=") + m_bin + ":/usr/bin:/bin"};
        return config;
    }
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_home;
    QString m_bin;
};

void TestRootScript::init() {
    m_dir = std::make_unique<QTemporaryDir>();
    m_home = m_dir->filePath("home");
    m_bin = m_dir->filePath("bin");
    QDir().mkpath(m_home);
    QDir().mkpath(m_bin);
    // Records its arguments one per line, the way a root tool found by bare name would
    // receive them.
    writeScript(QDir(m_bin), QStringLiteral("kextrecord"),
                "for a in \"$@\"; do printf '[%s]\\n' \"$a\"; done > \"$RECORD\"\n");
    writeScript(QDir(m_bin), QStringLiteral("kextfail"),
                "printf '%s failed to load - (libkern/kext) not loadable\\nsecond line\\n' "
                "\"$1\" >&2\n");
}

void TestRootScript::scriptLine_data() {
    QTest::addColumn<QString>("home");
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QString>("line"); // its first word is the command
    QTest::newRow("empty argument")
        << QString("/Users/user") << QString() << QString("kextload '' 2> /Users/user/qz_log.txt");
    QTest::newRow("apostrophe cannot end the quoting")
        << QString("/Users/user") << QString("/x/It's.kext")
        << QString("kextload '/x/It'\\''s.kext' 2> /Users/user/qz_log.txt");
    QTest::newRow("home with a blank is quoted")
        << QString("/Users/Jo Doe") << QString("/a.kext")
        << QString("kextunload '/a.kext' 2> '/Users/Jo Doe/qz_log.txt'");
}

void TestRootScript::scriptLine() {
    QFETCH(QString, home);
    QFETCH(QString, argument);
    QFETCH(QString, line);
    AdminAuthentication auth(directConfig(), nullptr, nullptr);
    RootScript script(auth, home);
    QCOMPARE(script.scriptLine(line.section(' ', 0, 0), argument), line);
    QCOMPARE(script.scriptPath(), home + "/qz_scr.sh");
}

void TestRootScript::run_data() {
    QTest::addColumn<QString>("tool");
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QString>("received"); // by the recording tool, one word per line
    QTest::addColumn<QString>("answer");   // the tool's error output
    const QString record = QStringLiteral("kextrecord");
    const QString hostile = QStringLiteral("/tmp/it's $(touch pwned) `id` ; rm -rf x.kext");
    const QString nonAscii = QStringLiteral("/Volumes/Données/Ünï.kext");
    QTest::newRow("empty argument") << record << QString() << "[]\n" << QString();
    QTest::newRow("hostile argument") << record << hostile << "[" + hostile + "]\n" << QString();
    QTest::newRow("non-ASCII argument") << record << nonAscii << "[" + nonAscii + "]\n"
                                        << QString();
    QTest::newRow("error text is the answer")
        << QStringLiteral("kextfail") << QStringLiteral("/x/A.kext") << QString()
        << QStringLiteral("/x/A.kext failed to load - (libkern/kext) not loadable\nsecond line\n");
}

// The argument reaches the tool as one word, never as shell code; the tool's error output
// is the answer; neither the script nor its log is left behind.
void TestRootScript::run() {
    QFETCH(QString, tool);
    QFETCH(QString, argument);
    QFETCH(QString, received);
    QFETCH(QString, answer);
    const QString record = m_dir->filePath("record.txt");
    qputenv("RECORD", record.toLocal8Bit());
    RecordingLog log;
    AdminAuthentication auth(directConfig(), nullptr, &log);
    RootScript script(auth, m_home);
    QCOMPARE(script.run(tool, argument).value_or("absent"), answer);
    QCOMPARE(QString::fromUtf8(readFile(record)), received);
    QVERIFY(!QFile::exists(m_dir->filePath("pwned")));
    QVERIFY(!QFile::exists(script.scriptPath()));
    QVERIFY(!QFile::exists(script.logPath()));
}

void TestRootScript::refusedAuthorizationLeavesTheScript() {
    const QString sudo = writeFakeSudo(QDir(m_dir->path()));
    qputenv("FAKE_SUDO_STATE", m_dir->filePath("granted").toLocal8Bit());
    const QString record = m_dir->filePath("record.txt");
    qputenv("RECORD", record.toLocal8Bit());
    ScriptedPrompt prompt; // cancelled
    AdminAuthentication::Config config;
    config.sudo = sudo;
    AdminAuthentication auth(config, &prompt, nullptr);
    RootScript script(auth, m_home);
    QVERIFY(!script.run("kextrecord", "/x/A.kext").has_value());
    QCOMPARE(prompt.asked, 1);
    QVERIFY(!QFile::exists(record));
    QCOMPARE(readFile(script.scriptPath()),
             QByteArray("kextrecord '/x/A.kext' 2> ") + m_home.toUtf8() + "/qz_log.txt");
}

QTEST_GUILESS_MAIN(TestRootScript)
#include "tst_rootscript.moc"

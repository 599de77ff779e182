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

// The home folder has a blank in it, so an unquoted log path would split into two words.
class TestRootScript : public QObject {
    Q_OBJECT
private slots:
    void init();
    void argumentIsOneWord_data();
    void argumentIsOneWord();
    void refusedAuthorizationLeavesTheScript();

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_home;
    QString m_record;
};

void TestRootScript::init() {
    m_dir = std::make_unique<QTemporaryDir>();
    m_home = m_dir->filePath("ho me");
    m_record = m_dir->filePath("record.txt");
    QDir().mkpath(m_home);
    QDir().mkpath(m_dir->filePath("bin"));
    // Records its arguments one per line, the way a root tool found by bare name would
    // receive them.
    writeScript(QDir(m_dir->filePath("bin")), QStringLiteral("kextrecord"),
                "for a in \"$@\"; do printf '[%s]\\n' \"$a\"; done > \"$RECORD\"\n");
    qputenv("RECORD", m_record.toLocal8Bit());
}

void TestRootScript::argumentIsOneWord_data() {
    QTest::addColumn<QString>("argument");
    QTest::newRow("empty") << QString();
    QTest::newRow("hostile, non-ASCII")
        << QStringLiteral("/Volumes/Données/it's $(touch pwned) `id` ; rm -rf Ünï.kext");
}

// The argument reaches the tool as one word, never as shell code; neither the script nor
// its log is left behind.
void TestRootScript::argumentIsOneWord() {
    QFETCH(QString, argument);
    AdminAuthentication::Config config;
    config.direct = true;
    config.environment = {QStringLiteral("PATH=") + m_dir->filePath("bin") + ":/usr/bin:/bin"};
    RecordingLog log;
    AdminAuthentication auth(config, nullptr, &log);
    RootScript script(auth, m_home);
    QCOMPARE(script.run("kextrecord", argument).value_or("absent"), QString());
    QCOMPARE(QString::fromUtf8(readFile(m_record)), "[" + argument + "]\n");
    QVERIFY(!QFile::exists(m_dir->filePath("pwned")));
    QVERIFY(!QFile::exists(script.scriptPath()));
    QVERIFY(!QFile::exists(script.logPath()));
}

void TestRootScript::refusedAuthorizationLeavesTheScript() {
    AdminAuthentication::Config config;
    config.sudo = writeFakeSudo(QDir(m_dir->path()));
    qputenv("FAKE_SUDO_STATE", m_dir->filePath("granted").toLocal8Bit());
    ScriptedPrompt prompt; // cancelled
    AdminAuthentication auth(config, &prompt, nullptr);
    RootScript script(auth, m_home);
    QVERIFY(!script.run("kextrecord", "/x/It's.kext").has_value());
    QCOMPARE(prompt.asked, 1);
    QVERIFY(!QFile::exists(m_record));
    QCOMPARE(readFile(m_home + "/qz_scr.sh"),
             "kextrecord '/x/It'\\''s.kext' 2> '" + m_home.toUtf8() + "/qz_log.txt'");
}

QTEST_GUILESS_MAIN(TestRootScript)
#include "tst_rootscript.moc"

#include "FakeSudo.h"
#include "RecordingLog.h"
#include "ScriptedPrompt.h"
#include "exec/AdminAuthentication.h"
#include "exec/RootScript.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <cerrno>

namespace {
QByteArray readFile(const QString &path) {
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    return file.readAll();
}

class CountingDelegate final : public AuthenticationDelegate {
public:
    int authorized = 0, deauthorized = 0, executed = 0, failed = 0;
    void authenticationDidAuthorize(AdminAuthentication *) override { ++authorized; }
    void authenticationDidDeauthorize(AdminAuthentication *) override { ++deauthorized; }
    void authenticationDidExecute(AdminAuthentication *) override { ++executed; }
    void authenticationFailedExecute(AdminAuthentication *) override { ++failed; }
};
} // namespace

// The administrator session over a stand-in sudo, and the root script that runs in it.
class TestAdminAuthentication : public QObject {
    Q_OBJECT
private slots:
    void init();
    void sessionFollowsSudosTimestamp();
    void refusedOrWrongPasswordRunsNothing_data();
    void refusedOrWrongPasswordRunsNothing();
    void grantedRunIsLogged();
    void directModeNeverAsks();
    void rootScriptArgumentIsOneWord_data();
    void rootScriptArgumentIsOneWord();
    void refusedRootScriptIsLeft();

private:
    AdminAuthentication::Config config() const {
        AdminAuthentication::Config c;
        c.sudo = m_sudo;
        return c;
    }
    QString tool(const QByteArray &body) {
        return writeScript(QDir(m_dir->path()), QStringLiteral("tool%1.sh").arg(++m_tools), body);
    }
    void grant() { QFile(m_state).open(QIODevice::WriteOnly); }
    QByteArray calls() const { return readFile(m_state + ".calls"); }

    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_sudo;
    QString m_state;
    QString m_home; // with a blank, so an unquoted log path would split into two words
    QString m_record;
    int m_tools = 0;
};

void TestAdminAuthentication::init() {
    m_dir = std::make_unique<QTemporaryDir>();
    m_sudo = writeFakeSudo(QDir(m_dir->path()));
    m_state = m_dir->filePath("granted");
    qputenv("FAKE_SUDO_STATE", m_state.toLocal8Bit());
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

// sudo's timestamp is the session: while it lasts nothing is asked; ending the session
// drops it, once however often it is ended; then the password is asked once for the tasks
// that follow.
void TestAdminAuthentication::sessionFollowsSudosTimestamp() {
    grant();
    ScriptedPrompt prompt;
    prompt.answer = QStringLiteral("secret");
    RecordingLog log;
    CountingDelegate delegate;
    AdminAuthentication auth(config(), &prompt, &log);
    auth.setDelegate(&delegate);
    auth.deauthenticate(); // no session yet: nothing happens
    QCOMPARE(delegate.deauthorized, 0);
    QVERIFY(auth.authenticate("root"));
    QVERIFY(auth.authorizeRootTask());
    QCOMPARE(prompt.asked, 0);
    QCOMPARE(delegate.authorized, 0);
    auth.deauthenticate();
    QCOMPARE(delegate.deauthorized, 1);
    QVERIFY(!QFile::exists(m_state)); // sudo -k dropped the timestamp

    QVERIFY(auth.authorizeRootTask());
    QVERIFY(auth.authorizeRootTask());
    QCOMPARE(prompt.asked, 1);
    QCOMPARE(delegate.authorized, 1);
    auth.deauthenticate();
    auth.deauthenticate();
    QCOMPARE(delegate.deauthorized, 2);
    QVERIFY2(!calls().contains("secret"), "the password reached sudo's command line");
    QVERIFY2(log.entries.isEmpty(), "authorizing wrote to the log");
}

void TestAdminAuthentication::refusedOrWrongPasswordRunsNothing_data() {
    QTest::addColumn<std::optional<QString>>("answer");
    QTest::newRow("cancelled") << std::optional<QString>();
    QTest::newRow("wrong password") << std::optional<QString>(QStringLiteral("guess"));
}

void TestAdminAuthentication::refusedOrWrongPasswordRunsNothing() {
    QFETCH(std::optional<QString>, answer);
    ScriptedPrompt prompt;
    prompt.answer = answer;
    RecordingLog log;
    CountingDelegate delegate;
    AdminAuthentication auth(config(), &prompt, &log);
    auth.setDelegate(&delegate);
    QVERIFY(!auth.authorizeRootTask());
    QCOMPARE(prompt.asked, 1);
    QCOMPARE(delegate.authorized, 0);
    // The next root run asks again; refused, it launches nothing and logs nothing.
    QVERIFY(!auth.executeCommandSynced(tool("echo ran\n"), {}));
    QCOMPARE(prompt.asked, 2);
    QVERIFY(log.entries.isEmpty());
    QCOMPARE(delegate.executed + delegate.failed, 0);
    QVERIFY2(!calls().contains("guess"), "the password reached sudo's command line");
}

// Through sudo the tool gets at most 19 arguments; its output reaches the log as it comes,
// in pieces of at most 1024 bytes, and no output makes no entry.
void TestAdminAuthentication::grantedRunIsLogged() {
    grant();
    RecordingLog log;
    AdminAuthentication auth(config(), nullptr, &log);
    QVERIFY(auth.executeCommandSynced(tool(":\n"), {}));
    QVERIFY(log.entries.isEmpty());
    QStringList args;
    for (int i = 1; i <= 20; ++i)
        args << QString::number(i);
    QVERIFY(auth.executeCommandSynced(
        tool("echo \"$# $1 ${19}\"\nhead -c 5000 /dev/zero | tr '\\0' x\n"), args));
    QCOMPARE(log.entries.join(), "19 1 19\n" + QByteArray(5000, 'x'));
    QVERIFY(log.entries.size() >= 5);
    for (const QByteArray &entry : log.entries)
        QVERIFY(entry.size() <= 1024);
}

// Run as root already (or on a sandbox), root tasks need no password and no sudo; a tool
// that cannot be started is logged the way the system's own call reports it.
void TestAdminAuthentication::directModeNeverAsks() {
    ScriptedPrompt prompt;
    RecordingLog log;
    CountingDelegate delegate;
    AdminAuthentication::Config direct;
    direct.direct = true;
    direct.sudo = m_dir->filePath("not-there");
    AdminAuthentication auth(direct, &prompt, &log);
    auth.setDelegate(&delegate);
    QVERIFY(auth.authorizeRootTask());
    QVERIFY(auth.executeCommandSynced(tool("echo direct\n"), {}));
    QCOMPARE(log.entries, QList<QByteArray>{"direct\n"});
    QCOMPARE(prompt.asked, 0);
    QCOMPARE(delegate.executed, 1);

    log.entries.clear();
    QVERIFY(!auth.executeCommandSynced(m_dir->filePath("missing-tool"), {}));
    QCOMPARE(log.entries, QList<QByteArray>{"Error " + QByteArray::number(ENOENT) +
                                            " in AuthorizationExecuteWithPrivileges"});
    QCOMPARE(delegate.failed, 1);
}

void TestAdminAuthentication::rootScriptArgumentIsOneWord_data() {
    QTest::addColumn<QString>("argument");
    QTest::newRow("empty") << QString();
    QTest::newRow("hostile, non-ASCII")
        << QStringLiteral("/Volumes/Données/it's $(touch pwned) `id` ; rm -rf Ünï.kext");
}

// The argument reaches the tool as one word, never as shell code; neither the script nor
// its log is left behind.
void TestAdminAuthentication::rootScriptArgumentIsOneWord() {
    QFETCH(QString, argument);
    AdminAuthentication::Config config;
    config.direct = true;
    config.environment = {QStringLiteral("PATH=") + m_dir->filePath("bin") + ":/usr/bin:/bin"};
    RecordingLog log;
    AdminAuthentication auth(config, nullptr, &log);
    RootScript script(auth, m_home);
    QCOMPARE(script.run("kextrecord", argument).value_or("absent"), QString());
    QCOMPARE(QString::fromUtf8(readFile(m_record)), "[" + argument + "]\n");
    QVERIFY(!QFile::exists(QStringLiteral("pwned"))); // in our working folder
    QVERIFY(!QFile::exists(script.scriptPath()));
    QVERIFY(!QFile::exists(script.logPath()));
}

void TestAdminAuthentication::refusedRootScriptIsLeft() {
    ScriptedPrompt prompt; // cancelled
    AdminAuthentication auth(config(), &prompt, nullptr);
    RootScript script(auth, m_home);
    QVERIFY(!script.run("kextrecord", "/x/It's.kext").has_value());
    QCOMPARE(prompt.asked, 1);
    QVERIFY(!QFile::exists(m_record));
    QCOMPARE(readFile(m_home + "/qz_scr.sh"),
             "kextrecord '/x/It'\\''s.kext' 2> '" + m_home.toUtf8() + "/qz_log.txt'");
}

QTEST_GUILESS_MAIN(TestAdminAuthentication)
#include "tst_adminauthentication.moc"

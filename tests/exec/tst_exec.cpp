#include "RecordingSheets.h"
#include "TestScripts.h"
#include "exec/AdminAuthentication.h"
#include "exec/Alerts.h"
#include "exec/FreedesktopNotifier.h"
#include "exec/Notifier.h"
#include "exec/PasswordPrompt.h"
#include "exec/ProcessRunner.h"
#include "exec/RootScript.h"
#include "exec/SystemLog.h"

#include <QDBusConnection>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QVariantMap>
#include <cerrno>
#include <optional>
#include <sys/wait.h>

namespace {
QByteArray readFile(const QString &path) {
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    return file.readAll();
}

// A child that ended and was never waited for; looked at without reaping it.
bool zombieLeft() {
    siginfo_t info{};
    return ::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid != 0;
}

// A stand-in for sudo with a state file as its timestamp: "-n -v" succeeds while the
// file exists, "-S -p '' -v" creates it when standard input brings "secret", "-k"
// removes it, "-n -- TOOL ARGS" runs the tool while it exists. Every call's arguments
// are appended to STATE.calls so tests can check that no password was ever an argument.
QString writeFakeSudo(const QDir &dir) {
    return writeScript(dir, QStringLiteral("sudo"), R"(state="$FAKE_SUDO_STATE"
printf '%s\n' "$*" >> "$state.calls"
case "$1" in
  -n) shift
      if [ "$1" = "-v" ]; then [ -f "$state" ] && exit 0; exit 1; fi
      if [ "$1" = "--" ]; then
          shift
          [ -f "$state" ] || { echo "sudo: a password is required" >&2; exit 1; }
          exec "$@"
      fi ;;
  -S) [ "$2" = "-p" ] && [ -z "$3" ] && [ "$4" = "-v" ] || exit 2
      read -r pw
      [ "$pw" = "secret" ] && { : > "$state"; exit 0; }
      exit 1 ;;
  -k) rm -f "$state"; exit 0 ;;
esac
exit 1
)");
}

// A session whose password dialog, log and delegate record what reaches them; the dialog
// gives `answer` (none: cancelled).
class Session final : public PasswordPrompt, public SystemLog, public AuthenticationDelegate {
public:
    std::optional<QString> answer;
    int asked = 0, authorized = 0, deauthorized = 0, executed = 0, failed = 0;
    QList<QByteArray> entries;
    AdminAuthentication auth;

    Session(const AdminAuthentication::Config &config, std::optional<QString> answer = {})
        : answer(std::move(answer)), auth(config, this, this) {
        auth.setDelegate(this);
    }
    std::optional<QString> askPassword(const QString &) override {
        ++asked;
        return answer;
    }
    void write(const QByteArray &entry) override { entries << entry; }
    void authenticationDidAuthorize(AdminAuthentication *) override { ++authorized; }
    void authenticationDidDeauthorize(AdminAuthentication *) override { ++deauthorized; }
    void authenticationDidExecute(AdminAuthentication *) override { ++executed; }
    void authenticationFailedExecute(AdminAuthentication *) override { ++failed; }
};

class RecordingNotifier final : public Notifier {
public:
    bool running = true;
    QStringList posted; // "title|description|name"
    bool isRunning() override { return running; }
    void notify(const QString &title, const QString &description, const QString &name) override {
        posted << QStringList{title, description, name}.join('|');
    }
};
} // namespace

// A notification service on a private bus: records what it is sent, as
// "icon|summary|body|name|urgency|desktop entry|timeout".
class NotificationService : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")
public:
    QStringList received;
public slots:
    uint Notify(const QString &, uint, const QString &icon, const QString &summary,
                const QString &body, const QStringList &, const QVariantMap &hints, int timeout) {
        received << QStringList{icon,
                                summary,
                                body,
                                hints.value("x-kextkeeper-notification").toString(),
                                QString::number(hints.value("urgency").value<uchar>()),
                                hints.value("desktop-entry").toString(),
                                QString::number(timeout)}
                        .join('|');
        return 1;
    }
};

// Running tools and telling how they went: the process runner, the administrator session
// over a stand-in sudo, the root script that runs in it, and the alerts.
class TestExec : public QObject {
    Q_OBJECT

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

private slots:
    void init() {
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

    void streamsAreSeparated_data() {
        QTest::addColumn<QByteArray>("body"); // empty: there is no tool
        QTest::addColumn<QString>("out");     // "<absent>": no text at all
        QTest::addColumn<QString>("err");
        const QString absent = QStringLiteral("<absent>");
        QTest::newRow("both, non-ASCII") << QByteArray("printf 'Gr\\303\\274n'; echo to-err >&2\n")
                                         << QStringLiteral("Grün") << QString("to-err\n");
        QTest::newRow("nothing") << QByteArray("exit 3\n") << QString() << QString();
        QTest::newRow("invalid UTF-8")
            << QByteArray("printf 'caf\\351'\nprintf '\\377' >&2\n") << absent << absent;
        QTest::newRow("multi-byte sequence cut short at the end")
            << QByteArray("printf 'ab\\303'\n") << absent << QString();
        QTest::newRow("missing tool") << QByteArray() << absent << absent;
    }

    void streamsAreSeparated() {
        QFETCH(QByteArray, body);
        QFETCH(QString, out);
        QFETCH(QString, err);
        const QString program = body.isEmpty() ? m_dir->filePath("no-such-tool") : tool(body);
        QCOMPARE(ProcessRunner::output(program, {}).value_or("<absent>"), out);
        QCOMPARE(ProcessRunner::errorOutput(program, {}).value_or("<absent>"), err);
    }

    void returnsWhenOutputClosesNotAtExit() {
        const QString linger = tool("echo done\nexec >&- 2>&-\nsleep 5\n");
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(ProcessRunner::output(linger, {}).value_or("absent"), QStringLiteral("done\n"));
        QVERIFY2(timer.elapsed() < 3000, "the runner waited for the tool's exit");
    }

    void leavesNoZombie() {
        const QString quick = tool("echo hi\n");
        for (int i = 0; i < 5; ++i)
            QVERIFY(ProcessRunner::output(quick, {}).has_value());
        QTRY_VERIFY_WITH_TIMEOUT(!zombieLeft(), 3000);
    }

    // sudo's timestamp is the session: while it lasts nothing is asked; ending the session
    // drops it, once however often it is ended; then the password is asked once for the tasks
    // that follow.
    void sessionFollowsSudosTimestamp() {
        grant();
        Session s(config(), QStringLiteral("secret"));
        s.auth.deauthenticate(); // no session yet: nothing happens
        QCOMPARE(s.deauthorized, 0);
        QVERIFY(s.auth.authenticate("root"));
        QVERIFY(s.auth.authorizeRootTask());
        QCOMPARE(s.asked, 0);
        QCOMPARE(s.authorized, 0);
        s.auth.deauthenticate();
        QCOMPARE(s.deauthorized, 1);
        QVERIFY(!QFile::exists(m_state)); // sudo -k dropped the timestamp

        QVERIFY(s.auth.authorizeRootTask());
        QVERIFY(s.auth.authorizeRootTask());
        QCOMPARE(s.asked, 1);
        QCOMPARE(s.authorized, 1);
        s.auth.deauthenticate();
        s.auth.deauthenticate();
        QCOMPARE(s.deauthorized, 2);
        QVERIFY2(!calls().contains("secret"), "the password reached sudo's command line");
        QVERIFY2(s.entries.isEmpty(), "authorizing wrote to the log");
    }

    void refusedOrWrongPasswordRunsNothing_data() {
        QTest::addColumn<std::optional<QString>>("answer");
        QTest::newRow("cancelled") << std::optional<QString>();
        QTest::newRow("wrong password") << std::optional<QString>(QStringLiteral("guess"));
    }

    void refusedOrWrongPasswordRunsNothing() {
        QFETCH(std::optional<QString>, answer);
        Session s(config(), answer);
        QVERIFY(!s.auth.authorizeRootTask());
        QCOMPARE(s.asked, 1);
        QCOMPARE(s.authorized, 0);
        // The next root run asks again; refused, it launches nothing and logs nothing.
        QVERIFY(!s.auth.executeCommandSynced(tool("echo ran\n"), {}));
        QCOMPARE(s.asked, 2);
        QVERIFY(s.entries.isEmpty());
        QCOMPARE(s.executed + s.failed, 0);
        QVERIFY2(!calls().contains("guess"), "the password reached sudo's command line");
    }

    // Through sudo the tool gets at most 19 arguments; its output reaches the log as it comes,
    // in pieces of at most 1024 bytes, and no output makes no entry.
    void grantedRunIsLogged() {
        grant();
        Session s(config());
        QVERIFY(s.auth.executeCommandSynced(tool(":\n"), {}));
        QVERIFY(s.entries.isEmpty());
        QStringList args;
        for (int i = 1; i <= 20; ++i)
            args << QString::number(i);
        QVERIFY(s.auth.executeCommandSynced(
            tool("echo \"$# $1 ${19}\"\nhead -c 5000 /dev/zero | tr '\\0' x\n"), args));
        QCOMPARE(s.entries.join(), "19 1 19\n" + QByteArray(5000, 'x'));
        QVERIFY(s.entries.size() >= 5);
        for (const QByteArray &entry : s.entries)
            QVERIFY(entry.size() <= 1024);
    }

    // Run as root already (or on a sandbox), root tasks need no password and no sudo; a tool
    // that cannot be started is logged the way the system's own call reports it.
    void directModeNeverAsks() {
        AdminAuthentication::Config direct;
        direct.direct = true;
        direct.sudo = m_dir->filePath("not-there");
        Session s(direct);
        QVERIFY(s.auth.authorizeRootTask());
        QVERIFY(s.auth.executeCommandSynced(tool("echo direct\n"), {}));
        QCOMPARE(s.entries, QList<QByteArray>{"direct\n"});
        QCOMPARE(s.asked, 0);
        QCOMPARE(s.executed, 1);

        s.entries.clear();
        QVERIFY(!s.auth.executeCommandSynced(m_dir->filePath("missing-tool"), {}));
        QCOMPARE(s.entries, QList<QByteArray>{"Error " + QByteArray::number(ENOENT) +
                                              " in AuthorizationExecuteWithPrivileges"});
        QCOMPARE(s.failed, 1);
    }

    void rootScriptArgumentIsOneWord_data() {
        QTest::addColumn<QString>("argument");
        QTest::newRow("empty") << QString();
        QTest::newRow("hostile, non-ASCII")
            << QStringLiteral("/Volumes/Données/it's $(touch pwned) `id` ; rm -rf Ünï.kext");
    }

    // The argument reaches the tool as one word, never as shell code; neither the script nor
    // its log is left behind.
    void rootScriptArgumentIsOneWord() {
        QFETCH(QString, argument);
        AdminAuthentication::Config config;
        config.direct = true;
        config.environment = {QStringLiteral("PATH=") + m_dir->filePath("bin") + ":/usr/bin:/bin"};
        Session s(config);
        RootScript script(s.auth, m_home);
        QCOMPARE(script.run("kextrecord", argument).value_or("absent"), QString());
        QCOMPARE(QString::fromUtf8(readFile(m_record)), "[" + argument + "]\n");
        QVERIFY(!QFile::exists(QStringLiteral("pwned"))); // in our working folder
        QVERIFY(!QFile::exists(script.scriptPath()));
        QVERIFY(!QFile::exists(script.logPath()));
    }

    void refusedRootScriptIsLeft() {
        Session s(config()); // the password dialog is cancelled
        RootScript script(s.auth, m_home);
        QVERIFY(!script.run("kextrecord", "/x/It's.kext").has_value());
        QCOMPARE(s.asked, 1);
        QVERIFY(!QFile::exists(m_record));
        QCOMPARE(readFile(m_home + "/qz_scr.sh"),
                 "kextrecord '/x/It'\\''s.kext' 2> '" + m_home.toUtf8() + "/qz_log.txt'");
    }

    // An error always gets a sheet; a success gets the notification alone when the service
    // runs, and a sheet when it doesn't.
    void combinationRule_data() {
        QTest::addColumn<bool>("serviceRuns");
        QTest::addColumn<bool>("error");
        QTest::addColumn<QStringList>("notifications");
        QTest::addColumn<QStringList>("sheets");
        const QString failed = QStringLiteral("Error|Mkext checksum error.|Task Failed");
        const QString errorSheet = QStringLiteral("error: Mkext checksum error.");
        const QString finished = QStringLiteral("Done|Selected tasks were finished.|Task Finished");
        const QString infoSheet = QStringLiteral("info: Selected tasks were finished.");
        QTest::newRow("error, service runs")
            << true << true << QStringList{failed} << QStringList{errorSheet};
        QTest::newRow("success, service runs")
            << true << false << QStringList{finished} << QStringList();
        QTest::newRow("error, no service")
            << false << true << QStringList() << QStringList{errorSheet};
        QTest::newRow("success, no service")
            << false << false << QStringList() << QStringList{infoSheet};
    }

    void combinationRule() {
        QFETCH(bool, serviceRuns);
        QFETCH(bool, error);
        QFETCH(QStringList, notifications);
        QFETCH(QStringList, sheets);
        RecordingNotifier notifier;
        notifier.running = serviceRuns;
        RecordingSheets presenter;
        Alerts alerts(&notifier, &presenter);
        if (error)
            alerts.showError("Mkext checksum error.", nullptr);
        else
            alerts.showInfo("Selected tasks were finished.", nullptr);
        QCOMPARE(notifier.posted, notifications);
        QCOMPARE(presenter.texts, sheets);
    }

    void desktopNotificationService() {
        const QString daemon = QStandardPaths::findExecutable("dbus-daemon");
        if (daemon.isEmpty())
            QSKIP("dbus-daemon is not installed");
        QProcess bus;
        bus.start(daemon, {"--session", "--nofork", "--print-address=1"});
        QVERIFY(bus.waitForReadyRead(5000));
        const QString address = QString::fromUtf8(bus.readLine()).trimmed();
        FreedesktopNotifier notifier(QDBusConnection::connectToBus(address, "client"));
        QVERIFY(!notifier.isRunning());

        // The notifier never waits for an answer, so the service can answer on our own thread.
        NotificationService service;
        QDBusConnection server = QDBusConnection::connectToBus(address, "server");
        QVERIFY(server.registerObject("/org/freedesktop/Notifications", &service,
                                      QDBusConnection::ExportAllSlots));
        QVERIFY(server.registerService("org.freedesktop.Notifications"));
        QVERIFY(notifier.isRunning());
        notifier.notify("Error", "It failed.", "Task Failed");
        QTRY_COMPARE(service.received,
                     QStringList{"kextkeeper|Error|It failed.|Task Failed|1|kextkeeper|-1"});
        bus.terminate();
        bus.waitForFinished(3000);
    }
};

QTEST_GUILESS_MAIN(TestExec)
#include "tst_exec.moc"

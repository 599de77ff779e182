#include "RecordingSheets.h"
#include "TestScripts.h"
#include "exec/AdminAuthentication.h"
#include "exec/Alerts.h"
#include "exec/Command.h"
#include "exec/FreedesktopNotifier.h"
#include "exec/Notifier.h"
#include "exec/PasswordPrompt.h"
#include "exec/ProcessRunner.h"
#include "exec/RootScript.h"
#include "exec/SudoLocator.h"
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
#include <thread>

namespace {
QByteArray readFile(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A child that ended and was never waited for; looked at without reaping it.
bool zombieLeft() {
    siginfo_t info{};
    return ::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid != 0;
}

// A stand-in for sudo with a state file as its timestamp: "-n -v" succeeds while the
// file exists, "-S -p '' -v" creates it when standard input brings "secret" (and answers
// a wrong password, or with FAKE_SUDO_REFUSES set any password, in sudo's own words),
// "-k" removes it, "-n -- TOOL ARGS" runs the tool while it exists. Every call's
// arguments are appended to STATE.calls so tests can check that no password was ever an
// argument.
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
      [ -n "$FAKE_SUDO_REFUSES" ] && { echo "Sorry, user tester may not run sudo on here." >&2; exit 1; }
      [ "$pw" = "secret" ] && { : > "$state"; exit 0; }
      echo "Sorry, try again." >&2
      read -r pw || echo "sudo: no password was provided" >&2
      echo "sudo: 1 incorrect password attempt" >&2
      exit 1 ;;
  -k) rm -f "$state"; exit 0 ;;
esac
exit 1
)");
}

// A session whose password prompt, log and delegate record what reaches them. The prompt
// types `answers` in turn while sudo calls them wrong, and cancels when they run out.
class Session final : public PasswordPrompt, public SystemLog, public AuthenticationDelegate {
public:
    QStringList answers;
    QStringList errors; // shown by showError
    int asked = 0, tries = 0, authorized = 0, deauthorized = 0, executed = 0, failed = 0;
    QList<QByteArray> entries;
    std::optional<AdminAuthentication> auth;

    Session(const AdminAuthentication::Config &config, QStringList answers = {})
        : answers(std::move(answers)) {
        auth.emplace(config, this, this);
        auth->setDelegate(this);
    }
    bool askPassword(const QString &, const Check &check) override {
        ++asked;
        while (!answers.isEmpty()) {
            ++tries;
            const Verdict verdict = check(answers.takeFirst());
            if (verdict != Verdict::WrongPassword)
                return verdict == Verdict::Granted;
        }
        return false;
    }
    void showError(const QString &text) override { errors << text; }
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
    // Root runs as ourselves, finding the test's tools by bare name.
    AdminAuthentication::Config rootConfig() const {
        AdminAuthentication::Config c;
        c.direct = true;
        c.environment = {QStringLiteral("PATH=") + m_dir->filePath("bin") + ":/usr/bin:/bin"};
        return c;
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_sudo;
    QString m_state;
    QString m_home; // with a blank, so an unquoted log path would split into two words
    QString m_record;
    QString m_lock;
    int m_tools = 0;

private slots:
    void init() {
        m_dir = std::make_unique<QTemporaryDir>();
        m_sudo = writeFakeSudo(QDir(m_dir->path()));
        m_state = m_dir->filePath("granted");
        qputenv("FAKE_SUDO_STATE", m_state.toLocal8Bit());
        m_home = m_dir->filePath("ho me");
        m_record = m_dir->filePath("record.txt");
        m_lock = m_dir->filePath("root-script.lock");
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

    // Only an executable file in an absolute PATH entry counts, then /usr/bin/sudo's stand-in;
    // the current folder (".", "", a relative entry) never does.
    void sudoIsFoundOnlyInAbsolutePlaces_data() {
        QTest::addColumn<QString>("path");  // "@" is the test's folder
        QTest::addColumn<QString>("found"); // "fallback": the fallback; "" none
        QTest::newRow("relative and empty entries") << ".::here:"
                                                    << "fallback";
        QTest::newRow("first absolute entry that has one") << "@/none:@/plain:@/bin:@/here"
                                                           << "@/bin/sudo";
        QTest::newRow("no fallback either") << "here"
                                            << "";
    }

    void sudoIsFoundOnlyInAbsolutePlaces() {
        QFETCH(QString, path);
        QFETCH(QString, found);
        const QDir dir(m_dir->path());
        for (const char *sub : {"here", "plain", "bin", "fallback"})
            dir.mkpath(sub);
        writeScript(QDir(dir.filePath("here")), "sudo", "exit 0\n");
        writeScript(QDir(dir.filePath("bin")), "sudo", "exit 0\n");
        writeScript(dir, "sudo", "exit 0\n");
        QFile plain(dir.filePath("plain/sudo")); // not executable
        QVERIFY(plain.open(QIODevice::WriteOnly));
        const QString fallback = writeScript(QDir(dir.filePath("fallback")), "sudo", "exit 0\n");
        const QString cwd = QDir::currentPath();
        QDir::setCurrent(m_dir->path());
        const QString result =
            SudoLocator::find(QString(path).replace('@', m_dir->path()),
                              found.isEmpty() ? m_dir->filePath("missing") : fallback);
        QDir::setCurrent(cwd);
        QCOMPARE(result, found == "fallback" ? fallback : found.replace('@', m_dir->path()));
    }

    // posix_spawn would start a bare or relative name from the current folder.
    void relativeProgramIsNeverStarted() {
        tool("touch ran\n");
        const QString cwd = QDir::currentPath();
        QDir::setCurrent(m_dir->path());
        for (const QString name : {"tool1.sh", "./tool1.sh"}) {
            ProcessRunner::Request request;
            request.program = name;
            const ProcessRunner::Result result = ProcessRunner::run(request);
            QVERIFY(!result.launched);
            QCOMPARE(result.launchError, EINVAL);
        }
        QDir::setCurrent(cwd);
        QVERIFY(!QFile::exists(m_dir->filePath("ran")));
    }

    // sudo's timestamp is the session: while it lasts nothing is asked; ending the session
    // drops it, once however often it is ended, and only when asked: the end of the program
    // keeps the user's ticket. A wrong password is asked again, the right one once.
    void sessionFollowsSudosTimestamp() {
        grant();
        Session s(config(), {"guess", "secret", "secret"});
        s.auth->deauthenticate(); // no session yet: nothing happens
        QCOMPARE(s.deauthorized, 0);
        QVERIFY(s.auth->authorizeRootTask());
        QCOMPARE(s.asked, 0);
        s.auth->deauthenticate();
        QCOMPARE(s.deauthorized, 1);
        QVERIFY(!QFile::exists(m_state)); // sudo -k dropped the timestamp

        QVERIFY(s.auth->authorizeRootTask());
        QVERIFY(s.auth->authorizeRootTask());
        QCOMPARE(s.asked, 1);
        QCOMPARE(s.tries, 2);
        QCOMPARE(s.authorized, 1);
        s.auth->deauthenticate();
        s.auth->deauthenticate();
        QCOMPARE(s.deauthorized, 2);
        QVERIFY2(!calls().contains("secret") && !calls().contains("guess"),
                 "the password reached sudo's command line");
        QVERIFY(s.authorized == 1 && s.errors.isEmpty() && s.entries.isEmpty());
        QVERIFY(s.auth->authorizeRootTask());
        s.auth.reset();
        QVERIFY2(QFile::exists(m_state), "ending the program dropped sudo's ticket");
    }

    // Cancel is silent; a user sudo turns down hears sudo's own words, and so does one
    // without any sudo. Nothing runs, nothing is logged, and the next root run asks again.
    void refusedAuthorizationRunsNothing_data() {
        QTest::addColumn<QStringList>("answers");
        QTest::addColumn<bool>("refuses");
        QTest::addColumn<bool>("noSudo");
        QTest::addColumn<QStringList>("errors");
        QTest::addColumn<int>("asked");
        QTest::newRow("cancelled") << QStringList{} << false << false << QStringList{} << 2;
        QTest::newRow("wrong password, then cancelled")
            << QStringList{"guess"} << false << false << QStringList{} << 2;
        QTest::newRow("refused by sudo")
            << QStringList{"secret"} << true << false
            << QStringList{"Sorry, user tester may not run sudo on here."} << 2;
        QTest::newRow("no sudo") << QStringList{"secret"} << false << true
                                 << QStringList(2, "sudo was not found: root tasks need it") << 0;
    }

    void refusedAuthorizationRunsNothing() {
        QFETCH(QStringList, answers);
        QFETCH(bool, refuses);
        QFETCH(bool, noSudo);
        QFETCH(QStringList, errors);
        QFETCH(int, asked);
        if (refuses)
            qputenv("FAKE_SUDO_REFUSES", "1");
        AdminAuthentication::Config c = config();
        if (noSudo)
            c.sudo.clear();
        Session s(c, answers);
        QVERIFY(!s.auth->authorizeRootTask());
        QVERIFY(!s.auth->executeCommandSynced(tool("echo ran\n"), {}));
        qunsetenv("FAKE_SUDO_REFUSES");
        QCOMPARE(s.asked, asked);
        QCOMPARE(s.errors, errors);
        QVERIFY(s.entries.isEmpty());
        QCOMPARE(s.executed + s.failed + s.authorized, 0);
        QVERIFY2(!calls().contains("guess") && !calls().contains("secret"),
                 "the password reached sudo's command line");
    }

    // Through sudo the tool gets at most 19 arguments; its output reaches the log as it comes,
    // in pieces of at most 1024 bytes, and no output makes no entry.
    void grantedRunIsLogged() {
        grant();
        Session s(config());
        QVERIFY(s.auth->executeCommandSynced(tool(":\n"), {}));
        QVERIFY(s.entries.isEmpty());
        QStringList args;
        for (int i = 1; i <= 20; ++i)
            args << QString::number(i);
        QVERIFY(s.auth->executeCommandSynced(
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
        QVERIFY(s.auth->authorizeRootTask());
        QVERIFY(s.auth->executeCommandSynced(tool("echo direct\n"), {}));
        QCOMPARE(s.entries, QList<QByteArray>{"direct\n"});
        QCOMPARE(s.asked, 0);
        QCOMPARE(s.executed, 1);

        s.entries.clear();
        QVERIFY(!s.auth->executeCommandSynced(m_dir->filePath("missing-tool"), {}));
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
        Session s(rootConfig());
        RootScript script(*s.auth, m_home, m_lock);
        QCOMPARE(script.run("kextrecord", argument).value_or("absent"), QString());
        QCOMPARE(QString::fromUtf8(readFile(m_record)), "[" + argument + "]\n");
        QVERIFY(!QFile::exists(QStringLiteral("pwned"))); // in our working folder
        QVERIFY(!QFile::exists(script.scriptPath()));
        QVERIFY(!QFile::exists(script.logPath()));
    }

    void refusedRootScriptIsLeft() {
        Session s(config()); // the password dialog is cancelled
        RootScript script(*s.auth, m_home, m_lock);
        QVERIFY(!script.run("kextrecord", "/x/It's.kext").has_value());
        QCOMPARE(s.asked, 1);
        QVERIFY(!QFile::exists(m_record));
        QCOMPARE(readFile(m_home + "/qz_scr.sh"),
                 "kextrecord '/x/It'\\''s.kext' 2> '" + m_home.toUtf8() + "/qz_log.txt'");
    }

    // Runs of one user's root script wait for each other, so each gets its own command's
    // text, not another's.
    void rootScriptRunsOneAtATime() {
        writeScript(QDir(m_dir->filePath("bin")), "say", "sleep 0.1; echo \"$1\" >&2\n");
        QStringList answers(4);
        std::vector<std::thread> runs;
        for (int i = 0; i < 4; ++i)
            runs.emplace_back([this, i, &answers] {
                Session s(rootConfig());
                answers[i] = RootScript(*s.auth, m_home, m_lock)
                                 .run("say", QString::number(i))
                                 .value_or("absent");
            });
        for (std::thread &run : runs)
            run.join();
        QCOMPARE(answers, QStringList({"0\n", "1\n", "2\n", "3\n"}));
    }

    // A link planted at the script's or the log's name is refused: nothing runs as root and
    // the link's target keeps its contents.
    void rootScriptRefusesLinks_data() {
        QTest::addColumn<QString>("name");
        QTest::newRow("script") << "qz_scr.sh";
        QTest::newRow("log") << "qz_log.txt";
    }

    void rootScriptRefusesLinks() {
        QFETCH(QString, name);
        const QString target = m_dir->filePath("precious");
        QFile file(target);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("keep") == 4);
        file.close();
        QVERIFY(QFile::link(target, m_home + "/" + name));
        Session s(rootConfig());
        QCOMPARE(RootScript(*s.auth, m_home, m_lock).run("kextrecord", "x").value_or("absent"),
                 m_home + "/" + name + " is a symbolic link; root commands will not follow it.");
        QCOMPARE(readFile(target), "keep");
        QVERIFY(!QFile::exists(m_record));
    }

    // The lines --dry-run prints are pasted into a shell: a word stays one word whatever it
    // holds, and an apostrophe can't end its quoting.
    void shellLines_data() {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<QString>("line");
        QTest::newRow("plain words stay bare")
            << QStringList{"-R", "0:0", "/S/L/E"} << "/bin/chown -R 0:0 /S/L/E";
        QTest::newRow("blank, empty word")
            << QStringList{"/Volumes/Mac HD", ""} << "/bin/chown '/Volumes/Mac HD' ''";
        QTest::newRow("apostrophe and a command after it")
            << QStringList{"/x/It's'; rm -rf ~; '.kext"}
            << R"(/bin/chown '/x/It'\''s'\''; rm -rf ~; '\''.kext')";
    }
    void shellLines() {
        QFETCH(QStringList, args);
        QFETCH(QString, line);
        QCOMPARE((Command{"/bin/chown", args, true}.toShellLine()), line);
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

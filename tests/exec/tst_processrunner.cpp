#include "TestScripts.h"
#include "exec/ProcessRunner.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>
#include <sys/wait.h>

class TestProcessRunner : public QObject {
    Q_OBJECT
private slots:
    void streamsAreSeparated_data();
    void streamsAreSeparated();
    void returnsWhenOutputClosesNotAtExit();
    void leavesNoZombie();

private:
    QTemporaryDir m_dir;
};

void TestProcessRunner::streamsAreSeparated_data() {
    QTest::addColumn<QByteArray>("body"); // empty: there is no tool
    QTest::addColumn<QString>("out");     // "<absent>": no text at all
    QTest::addColumn<QString>("err");
    const QString absent = QStringLiteral("<absent>");
    QTest::newRow("both") << QByteArray("echo to-out; echo to-err >&2\n") << QString("to-out\n")
                          << QString("to-err\n");
    QTest::newRow("nothing") << QByteArray("exit 3\n") << QString() << QString();
    QTest::newRow("non-ASCII") << QByteArray("printf 'Gr\\303\\274n'\n") << QStringLiteral("Grün")
                               << QString();
    QTest::newRow("invalid UTF-8")
        << QByteArray("printf 'caf\\351'\nprintf '\\377' >&2\n") << absent << absent;
    QTest::newRow("multi-byte sequence cut short at the end")
        << QByteArray("printf 'ab\\303'\n") << absent << QString();
    QTest::newRow("missing tool") << QByteArray() << absent << absent;
}

void TestProcessRunner::streamsAreSeparated() {
    QFETCH(QByteArray, body);
    QFETCH(QString, out);
    QFETCH(QString, err);
    const QString tool = body.isEmpty()
                             ? m_dir.filePath("no-such-tool")
                             : writeScript(QDir(m_dir.path()), QStringLiteral("tool.sh"), body);
    QCOMPARE(ProcessRunner::output(tool, {}).value_or("<absent>"), out);
    QCOMPARE(ProcessRunner::errorOutput(tool, {}).value_or("<absent>"), err);
}

void TestProcessRunner::returnsWhenOutputClosesNotAtExit() {
    const QString tool = writeScript(QDir(m_dir.path()), QStringLiteral("linger.sh"),
                                     "echo done\nexec >&- 2>&-\nsleep 5\n");
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(ProcessRunner::output(tool, {}).value_or("absent"), QStringLiteral("done\n"));
    QVERIFY2(timer.elapsed() < 3000, "the runner waited for the tool's exit");
}

// A child that ended and was never waited for; looked at without reaping it.
static bool zombieLeft() {
    siginfo_t info{};
    return ::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid != 0;
}

void TestProcessRunner::leavesNoZombie() {
    const QString tool = writeScript(QDir(m_dir.path()), QStringLiteral("quick.sh"), "echo hi\n");
    for (int i = 0; i < 5; ++i)
        QVERIFY(ProcessRunner::output(tool, {}).has_value());
    QTRY_VERIFY_WITH_TIMEOUT(!zombieLeft(), 3000);
}

QTEST_GUILESS_MAIN(TestProcessRunner)
#include "tst_processrunner.moc"

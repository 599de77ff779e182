#include "TestScripts.h"
#include "exec/ProcessRunner.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>
#include <dirent.h>
#include <unistd.h>

class TestProcessRunner : public QObject {
    Q_OBJECT
private slots:
    void streamsAreSeparated_data();
    void streamsAreSeparated();
    void missingToolIsNotLaunched();
    void returnsWhenOutputClosesNotAtExit();
    void leavesNoZombie();
    void chunksAndInputReachTheTool();

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

void TestProcessRunner::missingToolIsNotLaunched() {
    ProcessRunner::Request request;
    request.program = m_dir.filePath("no-such-tool");
    const ProcessRunner::Result result = ProcessRunner::run(request);
    QVERIFY(!result.launched);
    QVERIFY(result.launchError != 0);
}

void TestProcessRunner::returnsWhenOutputClosesNotAtExit() {
    const QString tool = writeScript(QDir(m_dir.path()), QStringLiteral("linger.sh"),
                                     "echo done\nexec >&- 2>&-\nsleep 5\n");
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(ProcessRunner::output(tool, {}).value_or("absent"), QStringLiteral("done\n"));
    QVERIFY2(timer.elapsed() < 3000, "the runner waited for the tool's exit");
}

static int zombieChildren() {
    int zombies = 0;
    DIR *proc = ::opendir("/proc");
    if (!proc)
        return 0;
    const QByteArray self = QByteArray::number(::getpid());
    while (dirent *entry = ::readdir(proc)) {
        QFile stat(QStringLiteral("/proc/%1/stat").arg(QString::fromLatin1(entry->d_name)));
        if (!stat.open(QIODevice::ReadOnly))
            continue;
        const QList<QByteArray> fields = stat.readAll().split(' ');
        // Field 3 is the state, field 4 the parent's pid (names without blanks here).
        if (fields.size() > 3 && fields[2] == "Z" && fields[3] == self)
            ++zombies;
    }
    ::closedir(proc);
    return zombies;
}

void TestProcessRunner::leavesNoZombie() {
    const QString tool = writeScript(QDir(m_dir.path()), QStringLiteral("quick.sh"), "echo hi\n");
    for (int i = 0; i < 5; ++i)
        QVERIFY(ProcessRunner::output(tool, {}).has_value());
    QTRY_COMPARE_WITH_TIMEOUT(zombieChildren(), 0, 3000);
}

void TestProcessRunner::chunksAndInputReachTheTool() {
    const QString tool =
        writeScript(QDir(m_dir.path()), QStringLiteral("cat.sh"), "cat; printf '%s' \"$1\"\n");
    ProcessRunner::Request request;
    request.program = tool;
    request.args = {QStringLiteral("it's $(one) word")};
    request.input = ProcessRunner::Input::Data;
    request.inputData = QByteArray(3000, 'x');
    request.chunkSize = 1024;
    QList<qsizetype> sizes;
    request.onChunk = [&](const QByteArray &chunk) { sizes << chunk.size(); };
    request.waitForExit = true;
    const ProcessRunner::Result result = ProcessRunner::run(request);
    QCOMPARE(result.exitStatus, 0);
    QCOMPARE(result.bytes, QByteArray(3000, 'x') + "it's $(one) word");
    for (qsizetype size : sizes)
        QVERIFY(size <= 1024);
    QVERIFY(sizes.size() >= 3);
}

QTEST_GUILESS_MAIN(TestProcessRunner)
#include "tst_processrunner.moc"

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
    void invalidUtf8IsAbsent();
    void missingToolIsAbsent();
    void returnsWhenOutputClosesNotAtExit();
    void leavesNoZombie();
    void chunksAndInputReachTheTool();

private:
    QTemporaryDir m_dir;
};

void TestProcessRunner::streamsAreSeparated_data() {
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("out");
    QTest::addColumn<QString>("err");
    QTest::newRow("both") << QByteArray("echo to-out; echo to-err >&2\n") << "to-out\n"
                          << "to-err\n";
    QTest::newRow("nothing") << QByteArray("exit 3\n") << ""
                             << "";
    QTest::newRow("non-ASCII") << QByteArray("printf 'Gr\\303\\274n'\n") << QStringLiteral("Grün")
                               << "";
}

void TestProcessRunner::streamsAreSeparated() {
    QFETCH(QByteArray, body);
    QFETCH(QString, out);
    QFETCH(QString, err);
    const QString tool = writeScript(QDir(m_dir.path()), QStringLiteral("tool.sh"), body);
    const std::optional<QString> stdoutText = ProcessRunner::output(tool, {});
    const std::optional<QString> stderrText = ProcessRunner::errorOutput(tool, {});
    QVERIFY(stdoutText.has_value());
    QVERIFY(stderrText.has_value());
    QCOMPARE(*stdoutText, out);
    QCOMPARE(*stderrText, err);
}

void TestProcessRunner::invalidUtf8IsAbsent() {
    const QString tool = writeScript(QDir(m_dir.path()), QStringLiteral("latin1.sh"),
                                     "printf 'caf\\351'\nprintf '\\377' >&2\n");
    QVERIFY(!ProcessRunner::output(tool, {}).has_value());
    QVERIFY(!ProcessRunner::errorOutput(tool, {}).has_value());
    // A multi-byte sequence cut short at the end is invalid too.
    const QString cut =
        writeScript(QDir(m_dir.path()), QStringLiteral("cut.sh"), "printf 'ab\\303'\n");
    QVERIFY(!ProcessRunner::output(cut, {}).has_value());
}

void TestProcessRunner::missingToolIsAbsent() {
    QVERIFY(!ProcessRunner::output(m_dir.filePath("no-such-tool"), {}).has_value());
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

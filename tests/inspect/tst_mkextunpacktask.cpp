#include "TestScripts.h"
#include "exec/AdminAuthentication.h"
#include "exec/IconAlert.h"
#include "inspect/MkextUnpackTask.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

// A stand-in for the archive tool: records the arguments of every run and answers with
// the error text (and optionally writes a file into the unpack folder).
struct FakeTool {
    QList<QStringList> runs;
    std::optional<QString> errors = QString();
    QString listing = QStringLiteral("Found 1 kexts:\n/S/L/E/A.kext - com.a (1.0)\n");
    bool writesKext = false;

    MkextUnpackTask::Tool tool() {
        return {[this](const QStringList &args) -> std::optional<QString> {
                    runs << args;
                    return listing;
                },
                [this](const QStringList &args) {
                    runs << args;
                    if (writesKext)
                        QDir().mkpath(args.at(3) + QStringLiteral("/A.kext"));
                    return errors;
                }};
    }
};

class TestMkextUnpackTask : public QObject {
    Q_OBJECT
private slots:
    void init() {
        m_dir = std::make_unique<QTemporaryDir>();
        QDir().mkpath(m_dir->filePath("home/Desktop"));
    }

    void alertText_data() {
        QTest::addColumn<QString>("errors");
        QTest::addColumn<QString>("alert");
        for (const char *arch : {"x86_64", "i386", "ppc", "ppc64"}) {
            const QString text = QStringLiteral("Architecture %1 not found in mkext.").arg(arch);
            QTest::newRow(arch) << text + '\n' << text;
        }
        // Only the tool's exact line is translated; anything else is its own wording.
        QTest::newRow("two line feeds") << "Architecture ppc not found in mkext.\n\n"
                                        << "Architecture ppc not found in mkext.\n\n";
        QTest::newRow("other architecture") << "Architecture arm not found in mkext.\n"
                                            << "Architecture arm not found in mkext.\n";
        QTest::newRow("warning and missing arch")
            << "warning: odd\nArchitecture i386 not found in mkext.\n"
            << "warning: odd\nArchitecture i386 not found in mkext.\n";
    }

    void alertText() {
        QFETCH(QString, errors);
        QFETCH(QString, alert);
        QCOMPARE(MkextUnpackTask::alertText(errors), alert);
    }

    // The message reads "error: TEXT" or "info: TEXT", as the window shows it.
    void unpack_data() {
        QTest::addColumn<QString>("mkext");
        QTest::addColumn<bool>("defaultFolder");
        QTest::addColumn<bool>("folderExists");
        QTest::addColumn<std::optional<QString>>("errors");
        QTest::addColumn<bool>("writesKext");
        QTest::addColumn<bool>("ran");
        QTest::addColumn<QString>("message");
        QTest::addColumn<bool>("folderAfter");
        using E = std::optional<QString>;
        const QString m = QStringLiteral("/x/It's Extensions.mkext");
        QTest::newRow("no mkext") << QString() << true << false << E("") << false << false
                                  << "error: You haven't selected any mkext." << false;
        QTest::newRow("default folder made and used")
            << m << true << false << E("") << true << true
            << "info: Mkext was unpacked to selected directory." << true;
        QTest::newRow("missing architecture removes the empty default folder")
            << m << true << false << E("Architecture ppc not found in mkext.\n") << false << true
            << "error: Architecture ppc not found in mkext." << false;
        QTest::newRow("warning after unpacking keeps the filled default folder")
            << m << true << true << E("kext A.kext is not authentic\n") << true << true
            << "error: kext A.kext is not authentic\n"
            << true;
        QTest::newRow("chosen folder missing") << m << false << false << E("") << false << false
                                               << "error: Unpack directory doesn't exist." << false;
        QTest::newRow("chosen empty folder is never removed")
            << m << false << true << E("Bad mkext magic/signature.\n") << false << true
            << "error: Bad mkext magic/signature.\n"
            << true;
        QTest::newRow("unreadable tool text")
            << m << true << true << E() << false << true
            << "error: The mkext tool could not be run, or wrote text that is not UTF-8." << false;
    }

    void unpack() {
        QFETCH(QString, mkext);
        QFETCH(bool, defaultFolder);
        QFETCH(bool, folderExists);
        QFETCH(std::optional<QString>, errors);
        QFETCH(bool, writesKext);
        QFETCH(bool, ran);
        QFETCH(QString, message);
        QFETCH(bool, folderAfter);

        FakeTool fake;
        fake.errors = errors;
        fake.writesKext = writesKext;
        const MkextUnpackTask unpacker(paths(), fake.tool());
        const QString folder = defaultFolder ? unpacker.defaultFolder()
                                             : m_dir->filePath(QStringLiteral("Chosen Földer"));
        QCOMPARE(unpacker.defaultFolder(), m_dir->filePath("home/Desktop/Mkext Contents"));
        if (folderExists)
            QVERIFY(QDir().mkpath(folder));

        const MkextUnpackTask::Outcome outcome =
            unpacker.unpack(mkext, QStringLiteral("ppc"), folder);
        QCOMPARE((outcome.error ? "error: " : "info: ") + outcome.message, message);
        const QList<QStringList> expectedRuns =
            ran ? QList<QStringList>{{"-a", "ppc", "-d", folder, mkext}} : QList<QStringList>{};
        QCOMPARE(fake.runs, expectedRuns);
        QCOMPARE(QFileInfo::exists(folder), folderAfter);
    }

    // Apple's tool (whose arguments the end-to-end unpack compares) answers a listing on its
    // standard output and a failed unpack on its standard error.
    void readsTheToolsOwnStreams() {
        const QDir sbin(m_dir->filePath("root/usr/sbin"));
        QVERIFY(QDir().mkpath(sbin.path()));
        writeScript(sbin, QStringLiteral("mkextunpack"),
                    "if [ \"$1\" = -v ]; then echo 'Found 0 kexts:'; echo noise >&2; exit 0; fi\n"
                    "echo 'Architecture i386 not found in mkext.' >&2; exit 1\n");
        AdminAuthentication session({}, nullptr, nullptr);
        IconAlert::configureDefault(paths(), session, Alerts(nullptr, nullptr));
        const MkextUnpackTask unpacker(paths(), MkextUnpackTask::systemTool(paths()));

        QCOMPARE(unpacker.listing(QStringLiteral("/E.mkext")), QStringLiteral("Found 0 kexts:\n"));
        const MkextUnpackTask::Outcome outcome = unpacker.unpack(
            QStringLiteral("/E.mkext"), QStringLiteral("i386"), unpacker.defaultFolder());
        QVERIFY(outcome.error);
        QCOMPARE(outcome.message, QStringLiteral("Architecture i386 not found in mkext."));
    }

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    SystemPaths paths() const {
        return SystemPaths(m_dir->filePath("root"), m_dir->filePath("home"),
                           m_dir->filePath("contents"));
    }
};

QTEST_GUILESS_MAIN(TestMkextUnpackTask)
#include "tst_mkextunpacktask.moc"

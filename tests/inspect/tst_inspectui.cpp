#include "CheckController.h"
#include "ChildWidget.h"
#include "CliRun.h"
#include "FilePanels.h"
#include "MainWindow.h"
#include "RecordingExecutor.h"
#include "RecordingSheets.h"
#include "TaskRunner.h"
#include "TestScripts.h"
#include "TestServices.h"
#include "TovrelAppDelegate.h"
#include "UnpackController.h"
#include "exec/Command.h"
#include "inspect/MachOWriter.h"
#include "mkext/MkextBuiltinTool.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>

// The check and unpack pages in a real window (what each button does to the page's own
// controls and which texts it shows) and `kextkeeper check` and `kextkeeper load` as real
// processes. The happy test load and the unpack with Apple's tool run end to end elsewhere.
class TestInspectUi : public QObject {
    Q_OBJECT
private slots:
    // The root has kextlibs, chown and kextload scripts that log their arguments, and no
    // mkextunpack.
    void init() {
        m_dir = std::make_unique<QTemporaryDir>();
        m_paths = std::make_unique<SystemPaths>(m_dir->filePath("root"), m_dir->filePath("home"),
                                                m_dir->filePath("contents"));
        for (const QString &folder :
             {m_paths->home() + "/Desktop", m_paths->contentsDir(), m_paths->system("/usr/sbin")})
            QDir().mkpath(folder);
        const QDir sbin(m_paths->system("/usr/sbin"));
        const QByteArray log = m_dir->filePath("tools.log").toUtf8();
        writeScript(sbin, "kextlibs",
                    "echo \"kextlibs $*\" >> '" + log +
                        "'\necho 'For all architectures:' >&2\n"
                        "printf '    com.apple.kpi.bsd = 10.8.0\\n    com.apple.kpi.libkern = "
                        "10.8.0\\n'\n");
        for (const char *tool : {"chown", "kextload"})
            writeScript(sbin, tool, "echo \"" + QByteArray(tool) + " $*\" >> '" + log + "'\n");

        m_sheets.texts.clear();
        m_test = std::make_unique<TestServices>(*m_paths, &m_sheets);
        m_executor = RecordingExecutor();
        // The member stays ours: the services only borrow it.
        m_test->useExecutor(std::shared_ptr<Executor>(std::shared_ptr<Executor>(), &m_executor));

        m_window = std::make_unique<MainWindow>();
        m_delegate = std::make_unique<TovrelAppDelegate>(*m_window, m_test->services);
        m_panels = std::make_unique<FilePanels>(m_window.get());
        m_tasks = std::make_unique<TaskRunner>();
        m_check = new CheckController(*m_delegate, m_test->services, *m_tasks, *m_panels);
        m_unpack = new UnpackController(*m_delegate, m_test->services, *m_panels);
        w<QLineEdit>("MKUnPath")->setText(m_paths->desktop() + "/Mkext Contents");
        w<QComboBox>("MkArch")->addItems({"x86_64", "i386", "ppc", "ppc64"});
    }

    void cleanup() {
        m_tasks.reset();
        m_delegate.reset();
        m_window.reset();
    }

    // Every probe sets all four boxes from the new kext and empties the dependency pane: from
    // all four marked, the two kexts between them turn every box over; a cancelled panel
    // leaves the last kext's path, marks and listing. Asked for, the dependencies follow.
    void probe() {
        using W = MachOWriter;
        const QString fat =
            makeKext("It's Ünique", W::fat({W::kextSlice(W::X86_64), W::kextSlice(W::I386)}));
        const QString ppc = makeKext("Ppc", W::thin(W::kextSlice(W::PPC)));
        for (const char *name : {"kx86_64", "ki386", "kppc", "kppc64"})
            w<QCheckBox>(name)->setChecked(true);
        auto choose = [this](int panelCode, const QString &kext) {
            w<QPlainTextEdit>("kdep")->setPlainText("earlier listing");
            m_panels->setAnswer([panelCode, kext](FilePanels::Kind, const QString &, auto done) {
                done(panelCode, {kext});
            });
            w<QPushButton>("bCheckSel")->click();
        };
        choose(1, fat);
        QCOMPARE(w<QLineEdit>("kPath")->text(), fat);
        QCOMPARE(archBoxes(), (QList<bool>{true, true, false, false}));
        QCOMPARE(w<QPlainTextEdit>("kdep")->toPlainText(), QString());
        QVERIFY(w<QProgressBar>("circleChck")->isHidden());
        choose(1, ppc);
        QCOMPARE(archBoxes(), (QList<bool>{false, false, true, false}));
        choose(0, fat);
        QCOMPARE(w<QLineEdit>("kPath")->text(), ppc);
        QCOMPARE(archBoxes(), (QList<bool>{false, false, true, false}));
        QCOMPARE(w<QPlainTextEdit>("kdep")->toPlainText(), QStringLiteral("earlier listing"));
        QCOMPARE(toolCalls(), QString());

        w<QCheckBox>("cbcheckdep")->setChecked(true);
        QSignalSpy shown(m_tasks.get(), &TaskRunner::taskEnded);
        choose(1, fat);
        QVERIFY(shown.wait(10000));
        QCOMPARE(
            w<QPlainTextEdit>("kdep")->toPlainText(),
            QStringLiteral("    com.apple.kpi.bsd = 10.8.0\n    com.apple.kpi.libkern = 10.8.0\n"));
        QCOMPARE(toolCalls(), "kextlibs " + fat + "\n");
        QVERIFY(w<QPushButton>("bCheckDep")->isEnabled());
        QVERIFY(w<QPushButton>("bCheckSel")->isEnabled());
        QVERIFY(w<QProgressBar>("circleChck")->isHidden());
        QVERIFY(m_sheets.texts.isEmpty());
    }

    // Without a kext the page's own check and the test load's answer show as errors; a refused
    // authorization runs nothing and says nothing; a load remembers the kext's folder in the
    // index the loaded kexts page looks paths up in (a load's commands are compared end to end).
    void testLoad() {
        w<QPushButton>("bCheckDep")->click();
        w<QPushButton>("bKextLoad")->click();
        const QString noKext = QStringLiteral("error: You haven't selected any kext.");
        QCOMPARE(m_sheets.texts, (QStringList{noKext, noKext}));
        QCOMPARE(m_executor.authorizeCalls, 0);

        const QString kext =
            makeKext("Good", MachOWriter::thin(MachOWriter::kextSlice(MachOWriter::X86_64)));
        w<QLineEdit>("kPath")->setText(kext);
        m_executor.grant = false;
        w<QPushButton>("bKextLoad")->click();
        QVERIFY(m_executor.commands.isEmpty());
        QVERIFY(m_test->services.index().customFolders().isEmpty());

        m_executor.grant = true;
        w<QPushButton>("bKextLoad")->click();
        QCOMPARE(m_test->services.index().customFolders(), QStringList{m_paths->desktop()});
        QCOMPARE(m_sheets.texts.size(), 2);
        QCOMPARE(m_tasks->running(), 0); // no listing was started along with the load
        QCOMPARE(toolCalls(), "kextload " + kext + "\n");
    }

    // Without Apple's tool the page reads the archive itself, says so, and answers with the
    // same texts; the folder comes from the folder panel.
    void unpackWithTheBuiltinReader() {
        const QString source = m_dir->filePath("source");
        const QString bundle = source + "/Fake.kext";
        MachOWriter::write(bundle + "/Contents/MacOS/Fake",
                           MachOWriter::fat({MachOWriter::kextSlice(MachOWriter::X86_64),
                                             MachOWriter::kextSlice(MachOWriter::I386)}));
        QVERIFY(writePlist(bundle + "/Contents/Info.plist",
                           "<key>CFBundleExecutable</key><string>Fake</string>"
                           "<key>CFBundleIdentifier</key><string>com.example.fake</string>"
                           "<key>CFBundleVersion</key><string>1.2</string>"
                           "<key>OSBundleRequired</key><string>Root</string>"));
        const QString mkext = m_paths->desktop() + "/Built.mkext";
        const MkextToolOutput built = MkextBuiltinTool::build(mkext, source, {});
        QVERIFY2(QFileInfo::exists(mkext), qPrintable(built.err));

        const QString chosen = m_dir->filePath("Chosen Földer");
        m_panels->setAnswer([mkext, chosen](FilePanels::Kind kind, const QString &, auto done) {
            done(1, {kind == FilePanels::Kind::Mkext ? mkext : chosen});
        });
        w<QPushButton>("bSelectFolderToUnpack")->click();
        QCOMPARE(w<QLineEdit>("MKUnPath")->text(), chosen);
        w<QPushButton>("bSelectMkext")->click();
        QCOMPARE(w<QLineEdit>("MKPath")->text(), mkext);
        const QString listing = w<QPlainTextEdit>("tvMkext")->toPlainText();
        QVERIFY2(listing.startsWith("Found 1 kexts:\n") &&
                     listing.contains("com.example.fake (1.2)"),
                 qPrintable(listing));
        QVERIFY(m_window->statusBar()->currentMessage().contains("built-in"));

        auto unpackAs = [this](const char *arch) {
            w<QComboBox>("MkArch")->setCurrentText(arch);
            w<QPushButton>("bUnpck")->click();
            return m_sheets.texts.last();
        };
        QVERIFY(QDir().mkpath(chosen));
        QCOMPARE(unpackAs("ppc"), QStringLiteral("error: Architecture ppc not found in mkext."));
        QCOMPARE(unpackAs("x86_64"),
                 QStringLiteral("info: Mkext was unpacked to selected directory."));
        QVERIFY(QFileInfo::exists(chosen + "/Fake.kext"));
        // Unpacking leaves the listing alone.
        QCOMPARE(w<QPlainTextEdit>("tvMkext")->toPlainText(), listing);
    }

    // The library tool's headings go to its standard error, which is not ours to judge.
    void checkVerb() {
        using W = MachOWriter;
        const QString fat =
            makeKext("It's Ü", W::fat({W::kextSlice(W::X86_64), W::kextSlice(W::I386)}));
        CliRun result = run({"check", fat});
        QCOMPARE(result.out, "x86_64: yes\ni386: yes\nppc: no\nppc64: no\n");
        QCOMPARE(result.status, 0);
        result = run({"check", makeKext("Ppc", W::thin(W::kextSlice(W::PPC))), "--deps"});
        QCOMPARE(result.out, "x86_64: no\ni386: no\nppc: yes\nppc64: no\n    com.apple.kpi.bsd = "
                             "10.8.0\n    com.apple.kpi.libkern = 10.8.0\n");
        QCOMPARE(result.status, 0);
    }

    void verbUsage_data() {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("status");
        QTest::newRow("check without kext") << QStringList{"check"} << 2;
        QTest::newRow("check unknown option") << QStringList{"check", "/a.kext", "--arch"} << 2;
        QTest::newRow("check missing kext") << QStringList{"check", "/nowhere/a.kext"} << 1;
        QTest::newRow("load missing kext") << QStringList{"load", "/nowhere/a.kext"} << 1;
    }

    void verbUsage() {
        QFETCH(QStringList, args);
        QFETCH(int, status);
        const CliRun result = run(args);
        QCOMPARE(result.status, status);
        QVERIFY(!result.err.isEmpty());
        QCOMPARE(result.out, QString());
    }

    void loadVerbDryRunChangesNothing() {
        const QString path =
            makeKext("Good One", MachOWriter::thin(MachOWriter::kextSlice(MachOWriter::X86_64)));
        const CliRun result = run({"--dry-run", "load", path});
        QCOMPARE(result.err, QString());
        // The blank in the kext's name makes it the one quoted word.
        QCOMPARE(result.out, m_paths->system("/usr/sbin/chown") + " -R 0:0 '" + path +
                                 "'\nkextload '" + path + "'\n");
        QCOMPARE(result.status, 0);
        QCOMPARE(toolCalls(), QString());
        QVERIFY(!QFileInfo::exists(m_paths->home() + "/.config/kextkeeper/CustomKextDirs.plist"));
    }

private:
    CliRun run(const QStringList &args) const {
        return runKextKeeper(m_paths->root(), m_paths->home(), args);
    }

    template <typename T> T *w(const char *name) const { return childWidget<T>(*m_window, name); }
    QList<bool> archBoxes() const {
        QList<bool> on;
        for (const char *name : {"kx86_64", "ki386", "kppc", "kppc64"})
            on << w<QCheckBox>(name)->isChecked();
        return on;
    }

    QString makeKext(const QString &name, const QByteArray &executable) const {
        const QString kext = m_paths->desktop() + '/' + name + ".kext";
        MachOWriter::write(kext + "/Contents/MacOS/" + name, executable);
        return kext;
    }

    // What the tool scripts were asked, one line per run.
    QString toolCalls() const {
        QFile file(m_dir->filePath("tools.log"));
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<SystemPaths> m_paths;
    RecordingSheets m_sheets;
    std::unique_ptr<TestServices> m_test;
    RecordingExecutor m_executor;
    std::unique_ptr<MainWindow> m_window;
    std::unique_ptr<TovrelAppDelegate> m_delegate;
    std::unique_ptr<FilePanels> m_panels;
    std::unique_ptr<TaskRunner> m_tasks;
    CheckController *m_check = nullptr;
    UnpackController *m_unpack = nullptr;
};

QTEST_MAIN(TestInspectUi)
#include "tst_inspectui.moc"

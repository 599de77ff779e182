#include "CheckController.h"
#include "MainWindow.h"
#include "RecordingExecutor.h"
#include "TestScripts.h"
#include "TovrelAppDelegate.h"
#include "UnpackController.h"
#include "exec/AdminAuthentication.h"
#include "exec/IconAlert.h"
#include "exec/SheetPresenter.h"
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

using Slice = MachOWriter::Slice;

// The check and unpack pages in a real window, over a sandbox root whose kextlibs,
// mkextunpack and kextload are scripts that log their arguments.
class TestInspectPages : public QObject {
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void probeSetsAllFourBoxes_data();
    void probeSetsAllFourBoxes();
    void cancelledPanelChangesNothing();
    void dependenciesFollowTheProbeWhenAsked();
    void nothingChosen();
    void testLoad();
    void listAndUnpack();
    void unpackIntoMissingFolder();
    void dropsGoToTheirPage();
    void builtinReaderWhenToolMissing();

private:
    struct Sheet {
        SheetPresenter::Kind kind;
        QString text;
        bool operator==(const Sheet &) const = default;
    };
    class RecordingSheets final : public SheetPresenter {
    public:
        QList<Sheet> shown;
        void showSheet(Kind kind, const QString &, const QString &text, QObject *) override {
            shown << Sheet{kind, text};
        }
    };

    QString makeKext(const QString &name, const QList<Slice> &slices) const;
    QString toolLog() const;
    // The page's controls by outlet name: check()->kPath, unpack()->MKPath.
    struct Controls {
        const TestInspectPages *test;
        template <typename T> T *find(const char *name) const {
            T *widget = test->m_window->findChild<T *>(QLatin1String(name));
            if (!widget)
                qFatal("no %s in the window", name);
            return widget;
        }
    };
    struct CheckControls : Controls {
        QLineEdit *kPath = find<QLineEdit>("kPath");
        QCheckBox *kx86_64 = find<QCheckBox>("kx86_64");
        QCheckBox *ki386 = find<QCheckBox>("ki386");
        QCheckBox *kppc = find<QCheckBox>("kppc");
        QCheckBox *kppc64 = find<QCheckBox>("kppc64");
        QCheckBox *cbcheckdep = find<QCheckBox>("cbcheckdep");
        QPlainTextEdit *kdep = find<QPlainTextEdit>("kdep");
        QProgressBar *circleChck = find<QProgressBar>("circleChck");
        QPushButton *bCheckSel = find<QPushButton>("bCheckSel");
        QPushButton *bCheckDep = find<QPushButton>("bCheckDep");
        QPushButton *bKextLoad = find<QPushButton>("bKextLoad");
    };
    struct UnpackControls : Controls {
        QLineEdit *MKPath = find<QLineEdit>("MKPath");
        QLineEdit *MKUnPath = find<QLineEdit>("MKUnPath");
        QComboBox *MkArch = find<QComboBox>("MkArch");
        QPlainTextEdit *tvMkext = find<QPlainTextEdit>("tvMkext");
        QPushButton *bSelectMkext = find<QPushButton>("bSelectMkext");
        QPushButton *bSelectFolderToUnpack = find<QPushButton>("bSelectFolderToUnpack");
        QPushButton *bUnpck = find<QPushButton>("bUnpck");
    };
    std::unique_ptr<CheckControls> check() const {
        return std::make_unique<CheckControls>(CheckControls{{this}});
    }
    std::unique_ptr<UnpackControls> unpack() const {
        return std::make_unique<UnpackControls>(UnpackControls{{this}});
    }
    // Answers the next panel of the page with this return code and path.
    void answerCheckPanel(int code, const QString &path);
    void answerUnpackPanels(const QString &mkext, const QString &folder);

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<SystemPaths> m_paths;
    std::unique_ptr<AdminAuthentication> m_session;
    RecordingSheets m_sheets;
    RecordingExecutor m_executor;
    std::unique_ptr<MainWindow> m_window;
    std::unique_ptr<TovrelAppDelegate> m_delegate;
    CheckController *m_check = nullptr;
    UnpackController *m_unpack = nullptr;
};

void TestInspectPages::init() {
    m_dir = std::make_unique<QTemporaryDir>();
    m_paths = std::make_unique<SystemPaths>(m_dir->filePath("root"), m_dir->filePath("home"),
                                            m_dir->filePath("contents"));
    for (const QString &folder :
         {m_paths->home() + "/Desktop", m_paths->contentsDir(), m_paths->system("/usr/sbin")})
        QDir().mkpath(folder);
    const QDir sbin(m_paths->system("/usr/sbin"));
    const QByteArray log = toolLog().toUtf8();
    writeScript(sbin, "kextlibs",
                "echo \"kextlibs $*\" >> '" + log +
                    "'\necho 'For all architectures:' >&2\n"
                    "printf '    com.apple.kpi.bsd = 10.8.0\\n    com.apple.kpi.libkern = "
                    "10.8.0\\n'\n");
    writeScript(sbin, "mkextunpack",
                "echo \"mkextunpack $*\" >> '" + log +
                    "'\n"
                    "if [ \"$1\" = -v ]; then printf 'Found 1 kexts:\\n/System/Library/"
                    "Extensions/A.kext - com.example.a (1.0)\\n'; exit 0; fi\n"
                    "if [ \"$2\" = ppc ]; then echo 'Architecture ppc not found in mkext.' >&2; "
                    "exit 1; fi\n"
                    "mkdir -p \"$4/A.kext\"\n");
    writeScript(sbin, "kextload",
                "echo \"kextload $*\" >> '" + log +
                    "'\ncase \"$1\" in *Bad*) echo \"$1 failed to load - (libkern/kext) not "
                    "loadable (reason unspecified); check the system/kernel logs for errors or "
                    "try kextutil(8).\" >&2; exit 1 ;; esac\n");

    AdminAuthentication::Config config;
    config.direct = true;
    config.environment = m_paths->rootEnvironment();
    m_session = std::make_unique<AdminAuthentication>(config, nullptr, nullptr);
    m_sheets.shown.clear();
    IconAlert::configureDefault(*m_paths, *m_session, Alerts(nullptr, &m_sheets));
    m_executor = RecordingExecutor();

    m_window = std::make_unique<MainWindow>();
    m_delegate = std::make_unique<TovrelAppDelegate>(*m_window, *m_paths);
    m_check = new CheckController(*m_delegate);
    m_unpack = new UnpackController(*m_delegate);
    m_check->setExecutor(&m_executor);
    unpack()->MKUnPath->setText(m_paths->desktop() + "/Mkext Contents");
    unpack()->MkArch->addItems({"x86_64", "i386", "ppc", "ppc64"});
}

void TestInspectPages::cleanup() {
    m_delegate.reset();
    m_window.reset();
}

QString TestInspectPages::toolLog() const {
    return m_dir->filePath("tools.log");
}

QString TestInspectPages::makeKext(const QString &name, const QList<Slice> &slices) const {
    const QString kext = m_paths->desktop() + '/' + name + ".kext";
    const QByteArray bytes =
        slices.size() == 1 ? MachOWriter::thin(slices.first()) : MachOWriter::fat(slices);
    MachOWriter::write(kext + "/Contents/MacOS/" + name, bytes);
    return kext;
}

void TestInspectPages::answerCheckPanel(int code, const QString &path) {
    m_check->setOpenPanel(
        [code, path](std::function<void(int, const QString &)> done) { done(code, path); });
}

void TestInspectPages::answerUnpackPanels(const QString &mkext, const QString &folder) {
    m_unpack->setOpenPanel([mkext, folder](UnpackController::PanelKind kind,
                                           std::function<void(int, const QString &)> done) {
        done(1, kind == UnpackController::PanelKind::Mkext ? mkext : folder);
    });
}

namespace {
QString readLog(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}
} // namespace

void TestInspectPages::probeSetsAllFourBoxes_data() {
    QTest::addColumn<QList<Slice>>("slices");
    QTest::addColumn<QList<bool>>("boxes");
    QTest::newRow("universal x86_64 i386")
        << QList<Slice>{MachOWriter::kextSlice(MachOWriter::X86_64),
                        MachOWriter::kextSlice(MachOWriter::I386)}
        << QList<bool>{true, true, false, false};
    QTest::newRow("thin ppc") << QList<Slice>{MachOWriter::kextSlice(MachOWriter::PPC)}
                              << QList<bool>{false, false, true, false};
    QTest::newRow("universal ppc ppc64") << QList<Slice>{MachOWriter::kextSlice(MachOWriter::PPC),
                                                         MachOWriter::kextSlice(MachOWriter::PPC64)}
                                         << QList<bool>{true, false, true, true};
}

// Every probe sets all four boxes from the new kext and empties the dependency pane.
void TestInspectPages::probeSetsAllFourBoxes() {
    QFETCH(QList<Slice>, slices);
    QFETCH(QList<bool>, boxes);
    const QString kext = makeKext("It's Ünique", slices);
    for (QCheckBox *box : {check()->kx86_64, check()->ki386, check()->kppc, check()->kppc64})
        box->setChecked(!boxes.at(0)); // an earlier kext's marks
    check()->kdep->setPlainText("earlier listing");
    answerCheckPanel(1, kext);
    check()->bCheckSel->click();
    QCOMPARE(check()->kPath->text(), kext);
    QCOMPARE((QList<bool>{check()->kx86_64->isChecked(), check()->ki386->isChecked(),
                          check()->kppc->isChecked(), check()->kppc64->isChecked()}),
             boxes);
    QCOMPARE(check()->kdep->toPlainText(), QString());
    QVERIFY(check()->circleChck->isHidden());
    QCOMPARE(readLog(toolLog()), QString()); // dependencies were not asked for
}

void TestInspectPages::cancelledPanelChangesNothing() {
    check()->kPath->setText("/earlier.kext");
    check()->ki386->setChecked(true);
    check()->kdep->setPlainText("kept");
    answerCheckPanel(0, makeKext("Other", {MachOWriter::kextSlice(MachOWriter::X86_64)}));
    check()->bCheckSel->click();
    QCOMPARE(check()->kPath->text(), QStringLiteral("/earlier.kext"));
    QVERIFY(check()->ki386->isChecked());
    QVERIFY(!check()->kx86_64->isChecked());
    QCOMPARE(check()->kdep->toPlainText(), QStringLiteral("kept"));
}

void TestInspectPages::dependenciesFollowTheProbeWhenAsked() {
    const QString kext = makeKext("Deps", {MachOWriter::kextSlice(MachOWriter::X86_64)});
    check()->cbcheckdep->setChecked(true);
    QSignalSpy shown(m_check, &CheckController::dependenciesShown);
    answerCheckPanel(1, kext);
    check()->bCheckSel->click();
    QVERIFY(shown.wait(10000));
    QCOMPARE(
        check()->kdep->toPlainText(),
        QStringLiteral("    com.apple.kpi.bsd = 10.8.0\n    com.apple.kpi.libkern = 10.8.0\n"));
    QCOMPARE(readLog(toolLog()), "kextlibs " + kext + "\n");
    QVERIFY(check()->bCheckDep->isEnabled());
    QVERIFY(check()->bCheckSel->isEnabled());
    QVERIFY(check()->circleChck->isHidden());
    QVERIFY(m_sheets.shown.isEmpty());
}

void TestInspectPages::nothingChosen() {
    check()->bCheckDep->click();
    check()->bKextLoad->click();
    const Sheet noKext{SheetPresenter::Kind::Error, "You haven't selected any kext."};
    QCOMPARE(m_sheets.shown, (QList<Sheet>{noKext, noKext}));
    QCOMPARE(m_executor.authorizeCalls, 0);

    unpack()->bUnpck->click();
    QCOMPARE(m_sheets.shown.last(),
             (Sheet{SheetPresenter::Kind::Error, "You haven't selected any mkext."}));
    QTest::qWait(50); // a listing started by mistake would have logged by now
    QCOMPARE(readLog(toolLog()), QString());
}

void TestInspectPages::testLoad() {
    const QString bad = makeKext("Bad Kext", {MachOWriter::kextSlice(MachOWriter::X86_64)});
    check()->kPath->setText(bad);
    check()->bKextLoad->click();
    const Command chown{m_paths->system("/usr/sbin/chown"), {"-R", "0:0", bad}};
    QCOMPARE(m_executor.commands, QList<Command>{chown});
    const Sheet refused{SheetPresenter::Kind::Error,
                        bad + " failed to load - (libkern/kext) not loadable (reason "
                              "unspecified); check the system/kernel logs for errors or "
                              "try kextutil(8).\n"};
    QCOMPARE(m_sheets.shown, QList<Sheet>{refused});
    // The kext's folder is a custom kext folder from now on.
    QCOMPARE(IconAlert::defaultinst().index().kextDirs(), QStringList{m_paths->desktop()});

    m_sheets.shown.clear();
    const QString good = makeKext("Good", {MachOWriter::kextSlice(MachOWriter::X86_64)});
    check()->kPath->setText(good);
    check()->bKextLoad->click();
    QVERIFY(m_sheets.shown.isEmpty());
    QCOMPARE(readLog(toolLog()), "kextload " + bad + "\nkextload " + good + "\n");

    // Refused: nothing runs and nothing is said.
    m_executor.grant = false;
    check()->bKextLoad->click();
    QCOMPARE(m_executor.commands.size(), 2);
    QVERIFY(m_sheets.shown.isEmpty());
}

void TestInspectPages::listAndUnpack() {
    const QString mkext = m_paths->desktop() + "/My Extensions.mkext";
    const QString folder = m_paths->desktop() + "/Mkext Contents";
    answerUnpackPanels(mkext, QString());
    unpack()->bSelectMkext->click();
    QCOMPARE(unpack()->MKPath->text(), mkext);
    QCOMPARE(unpack()->tvMkext->toPlainText(),
             QStringLiteral(
                 "Found 1 kexts:\n/System/Library/Extensions/A.kext - com.example.a (1.0)\n"));

    unpack()->MkArch->setCurrentText("ppc");
    unpack()->bUnpck->click();
    QCOMPARE(m_sheets.shown.last(),
             (Sheet{SheetPresenter::Kind::Error, "Architecture ppc not found in mkext."}));
    QVERIFY(!QFileInfo::exists(folder));

    unpack()->MkArch->setCurrentText("i386");
    unpack()->bUnpck->click();
    QCOMPARE(m_sheets.shown.last(),
             (Sheet{SheetPresenter::Kind::Info, "Mkext was unpacked to selected directory."}));
    QVERIFY(QFileInfo::exists(folder + "/A.kext"));
    QCOMPARE(readLog(toolLog()), "mkextunpack -v " + mkext + "\nmkextunpack -a ppc -d " + folder +
                                     " " + mkext + "\nmkextunpack -a i386 -d " + folder + " " +
                                     mkext + "\n");
    // Unpacking leaves the listing alone.
    QVERIFY(unpack()->tvMkext->toPlainText().startsWith("Found 1 kexts:"));
}

void TestInspectPages::unpackIntoMissingFolder() {
    const QString gone = m_dir->filePath("gone");
    answerUnpackPanels(m_paths->desktop() + "/E.mkext", gone);
    unpack()->bSelectFolderToUnpack->click();
    QCOMPARE(unpack()->MKUnPath->text(), gone);
    unpack()->bSelectMkext->click();
    unpack()->bUnpck->click();
    const Sheet missing{SheetPresenter::Kind::Error, "Unpack directory doesn't exist."};
    QCOMPARE(m_sheets.shown, QList<Sheet>{missing});
    QVERIFY(!QFileInfo::exists(gone));
}

void TestInspectPages::dropsGoToTheirPage() {
    const QString mkext = m_paths->desktop() + "/Extensions.mkext";
    const QString kext = makeKext("Dropped", {MachOWriter::kextSlice(MachOWriter::I386)});

    m_window->showPage(PageChecking);
    m_delegate->filesDragged({mkext});
    QCOMPARE(unpack()->MKPath->text(), QString());
    m_delegate->filesDragged(
        {kext, makeKext("Second", {MachOWriter::kextSlice(MachOWriter::PPC)})});
    QCOMPARE(check()->kPath->text(), kext);
    QVERIFY(check()->ki386->isChecked());
    QVERIFY(!check()->kppc->isChecked());
    QCOMPARE(m_window->currentPage(), int(PageChecking));

    m_window->showPage(PageUnpacking);
    m_delegate->filesDragged({m_paths->desktop() + "/EXTENSIONS.MKEXT"});
    QCOMPARE(unpack()->MKPath->text(), QString());
    m_delegate->filesDragged({kext});
    m_delegate->filesDragged({mkext});
    QCOMPARE(unpack()->MKPath->text(), mkext);
    QVERIFY(unpack()->tvMkext->toPlainText().startsWith("Found 1 kexts:"));
    QCOMPARE(m_window->currentPage(), int(PageUnpacking));
    QCOMPARE(readLog(toolLog()), "mkextunpack -v " + mkext + "\n");
    QVERIFY(m_sheets.shown.isEmpty());
}

// Without Apple's tool the page reads the archive itself, says so, and answers with the
// same texts.
void TestInspectPages::builtinReaderWhenToolMissing() {
    QVERIFY(QFile::remove(m_paths->system("/usr/sbin/mkextunpack")));
    const QString source = m_dir->filePath("source");
    const QString bundle = source + "/Fake.kext";
    MachOWriter::write(bundle + "/Contents/MacOS/Fake",
                       MachOWriter::fat({MachOWriter::kextSlice(MachOWriter::X86_64),
                                         MachOWriter::kextSlice(MachOWriter::I386)}));
    QFile info(bundle + "/Contents/Info.plist");
    QVERIFY(info.open(QIODevice::WriteOnly));
    info.write("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
               "<key>CFBundleExecutable</key><string>Fake</string>"
               "<key>CFBundleIdentifier</key><string>com.example.fake</string>"
               "<key>CFBundleVersion</key><string>1.2</string>"
               "<key>OSBundleRequired</key><string>Root</string></dict></plist>\n");
    info.close();
    const QString mkext = m_paths->desktop() + "/Built.mkext";
    const MkextToolOutput built = MkextBuiltinTool::build(mkext, source, {});
    QVERIFY2(QFileInfo::exists(mkext), qPrintable(built.err));

    answerUnpackPanels(mkext, QString());
    unpack()->bSelectMkext->click();
    QVERIFY(unpack()->tvMkext->toPlainText().startsWith("Found 1 kexts:\n"));
    QVERIFY(unpack()->tvMkext->toPlainText().contains("com.example.fake (1.2)"));
    QVERIFY(m_window->statusBar()->currentMessage().contains("built-in"));

    unpack()->MkArch->setCurrentText("ppc");
    unpack()->bUnpck->click();
    QCOMPARE(m_sheets.shown.last(),
             (Sheet{SheetPresenter::Kind::Error, "Architecture ppc not found in mkext."}));
    QVERIFY(!QFileInfo::exists(m_paths->desktop() + "/Mkext Contents"));
    unpack()->MkArch->setCurrentText("x86_64");
    unpack()->bUnpck->click();
    QCOMPARE(m_sheets.shown.last(),
             (Sheet{SheetPresenter::Kind::Info, "Mkext was unpacked to selected directory."}));
    QVERIFY(QFileInfo::exists(m_paths->desktop() + "/Mkext Contents/Fake.kext"));
}

QTEST_MAIN(TestInspectPages)
#include "tst_inspectpages.moc"

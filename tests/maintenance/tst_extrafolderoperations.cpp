#include "MaintenanceSandbox.h"
#include "RecordingExecutor.h"
#include "maintenance/ExtraFolderOperations.h"
#include "maintenance/ExtraFolderView.h"

using Outcome = ExtraFolderOperations::Outcome;

// The Extra menu's four commands on real folder trees: the question, its answers, the
// error alerts and the exact root commands.
class TestExtraFolderOperations : public QObject {
    Q_OBJECT
private slots:
    void conversions_data();
    void conversions();
    void onlyYesRuns_data();
    void onlyYesRuns();
    void missingFolders_data();
    void missingFolders();
    void refusedAuthorization_data();
    void refusedAuthorization();
    void hideAndShow_data();
    void hideAndShow();
    void answerUsesTheVolumeChosenNow();
};

namespace {

class RecordingView final : public ExtraFolderView {
public:
    QString volume = MaintenanceSandbox::volume;
    QStringList roots;
    QStringList questions;
    std::function<void(int)> pendingAnswer;
    QStringList errors;
    int reevaluations = 0;

    QString selectedVolume() const override { return volume; }
    void rootPathChosen(const QString &rootPath) override { roots << rootPath; }
    void askToContinue(const QString &text, std::function<void(int)> answered) override {
        questions << text;
        pendingAnswer = std::move(answered);
    }
    void showError(const QString &message) override { errors << message; }
    void reevaluateVolume() override { ++reevaluations; }
};

const QString bringBackQuestion =
    "Do you want to bring back Extra/Extensions from Extra/KextStore on selected disk?";
const QString createQuestion =
    "Do you want to create Extra/KextStore from Extra/Extensions on selected disk?\n"
    "Mkext will be created, it can take a while.";

Outcome start(ExtraFolderOperations &ops, const QString &command) {
    if (command == "bring back")
        return ops.BringBackEE();
    if (command == "create")
        return ops.MI_CreateEKS();
    if (command == "hide")
        return ops.HideExtra();
    return ops.ShowExtra();
}

} // namespace

void TestExtraFolderOperations::conversions_data() {
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<QString>("question");
    QTest::addColumn<QStringList>("expected");

    const QString rmMkext = "/bin/rm|-R|R/Extra/Extensions.mkext";
    const QString mvBack = "/bin/mv|R/Extra/KextStore|R/Extra/Extensions";
    const QString mvCreate = "/bin/mv|R/Extra/Extensions|R/Extra/KextStore";
    const QString build =
        "/usr/sbin/kextcache|-v|1|-a|i386|-a|x86_64|-m|R/Extra/Extensions.mkext|R/Extra/KextStore";

    QTest::newRow("bring back with an mkext")
        << "bring back" << QStringList{"Extra/KextStore", "Extra/Extensions.mkext"}
        << bringBackQuestion << QStringList{rmMkext, mvBack};
    QTest::newRow("bring back without an mkext") << "bring back" << QStringList{"Extra/KextStore"}
                                                 << bringBackQuestion << QStringList{mvBack};
    // mv then puts KextStore inside the existing Extensions; that is what the user asked.
    QTest::newRow("bring back when Extensions exists too")
        << "bring back"
        << QStringList{"Extra/KextStore", "Extra/Extensions", "Extra/Extensions.mkext"}
        << bringBackQuestion << QStringList{rmMkext, mvBack};
    QTest::newRow("create") << "create" << QStringList{"Extra/Extensions"} << createQuestion
                            << QStringList{mvCreate, build};
    QTest::newRow("create when KextStore exists too")
        << "create" << QStringList{"Extra/Extensions", "Extra/KextStore"} << createQuestion
        << QStringList{mvCreate, build};
    QTest::newRow("create ignores a version folder")
        << "create" << QStringList{"Extra/Extensions", "Extra/10.6/Extensions"} << createQuestion
        << QStringList{mvCreate, build};
}

void TestExtraFolderOperations::conversions() {
    QFETCH(QString, command);
    QFETCH(QStringList, folders);
    QFETCH(QString, question);
    QFETCH(QStringList, expected);

    MaintenanceSandbox box;
    box.makeFolders(folders);
    RecordingView view;
    RecordingExecutor executor;
    ExtraFolderOperations ops(box.paths(), executor, view);

    QCOMPARE(start(ops, command), Outcome::Asking);
    QCOMPARE(view.questions, QStringList{question});
    // Nothing happens while the question is open.
    QCOMPARE(executor.authorizeCalls, 0);
    QVERIFY(executor.commands.isEmpty());

    view.pendingAnswer(ExtraFolderView::yesCode);
    QCOMPARE(ops.lastAnswer(), Outcome::Done);
    QCOMPARE(executor.authorizeCalls, 1);
    QCOMPARE(executor.commands, box.commands(expected));
    QCOMPARE(view.reevaluations, 1);
    QVERIFY(view.errors.isEmpty());
    QCOMPARE(view.roots, (QStringList{box.rootPath(), box.rootPath()}));
}

void TestExtraFolderOperations::onlyYesRuns_data() {
    QTest::addColumn<QString>("command");
    QTest::addColumn<int>("code");
    for (const char *command : {"bring back", "create"}) {
        QTest::addRow("%s, No", command) << command << ExtraFolderView::noCode;
        QTest::addRow("%s, closed", command) << command << 0;
        QTest::addRow("%s, other code", command) << command << 1002;
    }
}

void TestExtraFolderOperations::onlyYesRuns() {
    QFETCH(QString, command);
    QFETCH(int, code);
    MaintenanceSandbox box;
    box.makeFolders({"Extra/Extensions", "Extra/KextStore", "Extra/Extensions.mkext"});
    RecordingView view;
    RecordingExecutor executor;
    ExtraFolderOperations ops(box.paths(), executor, view);

    QCOMPARE(start(ops, command), Outcome::Asking);
    view.pendingAnswer(code);
    QCOMPARE(ops.lastAnswer(), Outcome::Declined);
    QCOMPARE(executor.authorizeCalls, 0);
    QVERIFY(executor.commands.isEmpty());
    QCOMPARE(view.reevaluations, 0);
}

void TestExtraFolderOperations::missingFolders_data() {
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<QString>("error");

    QTest::newRow("bring back without KextStore")
        << "bring back" << QStringList{"Extra/Extensions", "Extra/10.6/KextStore"}
        << "No Extra/KextStore found.";
    QTest::newRow("create without Extensions")
        << "create" << QStringList{"Extra/KextStore", "Extra/10.6/Extensions"}
        << "No Extra/Extensions found.";
    QTest::newRow("hide without Extra")
        << "hide" << QStringList{"System/Library"} << "No Extra folder on selected disk.";
    QTest::newRow("show without Extra")
        << "show" << QStringList{} << "No Extra folder on selected disk.";
}

void TestExtraFolderOperations::missingFolders() {
    QFETCH(QString, command);
    QFETCH(QStringList, folders);
    QFETCH(QString, error);
    MaintenanceSandbox box;
    box.makeFolders(folders);
    RecordingView view;
    RecordingExecutor executor;
    ExtraFolderOperations ops(box.paths(), executor, view);

    QCOMPARE(start(ops, command), Outcome::Missing);
    QCOMPARE(view.errors, QStringList{error});
    QVERIFY(view.questions.isEmpty());
    QCOMPARE(executor.authorizeCalls, 0); // no password asked for nothing
    QVERIFY(executor.commands.isEmpty());
    QCOMPARE(view.reevaluations, 0);
}

void TestExtraFolderOperations::refusedAuthorization_data() {
    QTest::addColumn<QString>("command");
    QTest::newRow("bring back") << "bring back";
    QTest::newRow("create") << "create";
    QTest::newRow("hide") << "hide";
    QTest::newRow("show") << "show";
}

void TestExtraFolderOperations::refusedAuthorization() {
    QFETCH(QString, command);
    MaintenanceSandbox box;
    box.makeFolders({"Extra/Extensions", "Extra/KextStore"});
    RecordingView view;
    RecordingExecutor executor;
    executor.grant = false;
    ExtraFolderOperations ops(box.paths(), executor, view);

    const Outcome outcome = start(ops, command);
    if (outcome == Outcome::Asking) {
        view.pendingAnswer(ExtraFolderView::yesCode);
        QCOMPARE(ops.lastAnswer(), Outcome::Refused);
    } else {
        QCOMPARE(outcome, Outcome::Refused);
    }
    QCOMPARE(executor.authorizeCalls, 1);
    QVERIFY(executor.commands.isEmpty());
    QVERIFY(view.errors.isEmpty());
    QCOMPARE(view.reevaluations, 0);
}

void TestExtraFolderOperations::hideAndShow_data() {
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("expected");
    QTest::newRow("hide") << "hide"
                          << "/usr/bin/chflags|hidden|R/Extra";
    QTest::newRow("show") << "show"
                          << "/usr/bin/chflags|nohidden|R/Extra";
}

void TestExtraFolderOperations::hideAndShow() {
    QFETCH(QString, command);
    QFETCH(QString, expected);
    MaintenanceSandbox box;
    // An Extra folder without kexts is still hidden or shown.
    box.makeFolders({"Extra"});
    RecordingView view;
    RecordingExecutor executor;
    ExtraFolderOperations ops(box.paths(), executor, view);

    QCOMPARE(start(ops, command), Outcome::Done);
    QVERIFY(view.questions.isEmpty());
    QCOMPARE(executor.commands, box.commands({expected}));
    QCOMPARE(view.roots, QStringList{box.rootPath()});
    QVERIFY(view.errors.isEmpty());
    QCOMPARE(view.reevaluations, 0); // the option boxes don't depend on the flag
}

void TestExtraFolderOperations::answerUsesTheVolumeChosenNow() {
    MaintenanceSandbox box;
    box.makeFolders({"Extra/KextStore"});
    const QString other = box.dir.path() + "/Volumes/Other/";
    RecordingView view;
    RecordingExecutor executor;
    ExtraFolderOperations ops(box.paths(), executor, view);

    QCOMPARE(ops.BringBackEE(), Outcome::Asking);
    view.volume = "Other"; // picked while the sheet was open: no KextStore there at all
    view.pendingAnswer(ExtraFolderView::yesCode);
    QCOMPARE(view.roots, (QStringList{box.rootPath(), other}));
    QCOMPARE(executor.commands,
             (QList<Command>{{box.dir.path() + "/bin/mv",
                              {other + "Extra/KextStore", other + "Extra/Extensions"},
                              true}}));
}

QTEST_GUILESS_MAIN(TestExtraFolderOperations)
#include "tst_extrafolderoperations.moc"

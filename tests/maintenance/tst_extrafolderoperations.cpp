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
    void commands_data();
    void commands();
    void nothingRuns_data();
    void nothingRuns();
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

// One Extra menu over a fresh sandbox with the given folders.
struct Menu {
    explicit Menu(const QStringList &folders, bool grant = true) {
        box.makeFolders(folders);
        executor.grant = grant;
    }
    MaintenanceSandbox box;
    RecordingView view;
    RecordingExecutor executor;
    ExtraFolderOperations ops{box.paths(), executor, view};
};

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

void TestExtraFolderOperations::commands_data() {
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<QString>("question"); // empty: it runs without asking
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
    // mv does not look whether the target is there already: that is what the user asked.
    QTest::newRow("create") << "create" << QStringList{"Extra/Extensions", "Extra/KextStore"}
                            << createQuestion << QStringList{mvCreate, build};
    // An Extra folder without kexts is still hidden or shown.
    QTest::newRow("hide") << "hide" << QStringList{"Extra"} << ""
                          << QStringList{"/usr/bin/chflags|hidden|R/Extra"};
    QTest::newRow("show") << "show" << QStringList{"Extra"} << ""
                          << QStringList{"/usr/bin/chflags|nohidden|R/Extra"};
}

void TestExtraFolderOperations::commands() {
    QFETCH(QString, command);
    QFETCH(QStringList, folders);
    QFETCH(QString, question);
    QFETCH(QStringList, expected);
    Menu m(folders);
    const bool asks = !question.isEmpty();

    const Outcome first = start(m.ops, command);
    QCOMPARE(m.view.questions, asks ? QStringList{question} : QStringList{});
    if (asks) {
        QCOMPARE(first, Outcome::Asking);
        // Nothing happens while the question is open.
        QCOMPARE(m.executor.authorizeCalls, 0);
        QVERIFY(m.executor.commands.isEmpty());
        m.view.pendingAnswer(ExtraFolderView::yesCode);
    }
    QCOMPARE(asks ? m.ops.lastAnswer() : first, Outcome::Done);
    QCOMPARE(m.executor.authorizeCalls, 1);
    QCOMPARE(m.executor.commands, m.box.commands(expected));
    QVERIFY(m.view.errors.isEmpty());
    // Only a conversion changes what the option boxes depend on; its root is chosen
    // again once answered.
    QCOMPARE(m.view.reevaluations, asks ? 1 : 0);
    QCOMPARE(m.view.roots, QStringList(asks ? 2 : 1, m.box.rootPath()));
}

Q_DECLARE_METATYPE(Outcome)

void TestExtraFolderOperations::nothingRuns_data() {
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<bool>("grant");
    QTest::addColumn<int>("answer"); // -1: no question is asked
    QTest::addColumn<Outcome>("outcome");
    QTest::addColumn<QString>("error");

    const QStringList all{"Extra/Extensions", "Extra/KextStore", "Extra/Extensions.mkext"};
    const int yes = ExtraFolderView::yesCode;
    // Only Yes runs anything (the window's rows answer create with No and Escape).
    QTest::newRow("bring back, No")
        << "bring back" << all << true << ExtraFolderView::noCode << Outcome::Declined << "";
    // A missing folder is told before any question or password.
    QTest::newRow("bring back without KextStore")
        << "bring back" << QStringList{"Extra/Extensions", "Extra/10.6/KextStore"} << true << -1
        << Outcome::Missing << "No Extra/KextStore found.";
    QTest::newRow("create without Extensions")
        << "create" << QStringList{"Extra/KextStore", "Extra/10.6/Extensions"} << true << -1
        << Outcome::Missing << "No Extra/Extensions found.";
    QTest::newRow("hide without Extra") << "hide" << QStringList{"System/Library"} << true << -1
                                        << Outcome::Missing << "No Extra folder on selected disk.";
    // A refused password ends it silently.
    QTest::newRow("bring back, refused")
        << "bring back" << all << false << yes << Outcome::Refused << "";
    QTest::newRow("show, refused") << "show" << all << false << -1 << Outcome::Refused << "";
}

void TestExtraFolderOperations::nothingRuns() {
    QFETCH(QString, command);
    QFETCH(QStringList, folders);
    QFETCH(bool, grant);
    QFETCH(int, answer);
    QFETCH(Outcome, outcome);
    QFETCH(QString, error);
    Menu m(folders, grant);

    const Outcome first = start(m.ops, command);
    QCOMPARE(m.view.questions.size(), answer < 0 ? 0 : 1);
    if (answer >= 0) {
        QCOMPARE(first, Outcome::Asking);
        m.view.pendingAnswer(answer);
        QCOMPARE(m.ops.lastAnswer(), outcome);
    } else {
        QCOMPARE(first, outcome);
    }
    QCOMPARE(m.executor.authorizeCalls, outcome == Outcome::Refused ? 1 : 0);
    QVERIFY(m.executor.commands.isEmpty());
    QCOMPARE(m.view.errors, error.isEmpty() ? QStringList{} : QStringList{error});
    QCOMPARE(m.view.reevaluations, 0);
}

void TestExtraFolderOperations::answerUsesTheVolumeChosenNow() {
    Menu m({"Extra/KextStore"});
    const QString other = m.box.dir.path() + "/Volumes/Other/";

    QCOMPARE(m.ops.BringBackEE(), Outcome::Asking);
    m.view.volume = "Other"; // picked while the sheet was open: no KextStore there at all
    m.view.pendingAnswer(ExtraFolderView::yesCode);
    QCOMPARE(m.view.roots, (QStringList{m.box.rootPath(), other}));
    QCOMPARE(m.executor.commands,
             (QList<Command>{{m.box.dir.path() + "/bin/mv",
                              {other + "Extra/KextStore", other + "Extra/Extensions"},
                              true}}));
}

QTEST_GUILESS_MAIN(TestExtraFolderOperations)
#include "tst_extrafolderoperations.moc"

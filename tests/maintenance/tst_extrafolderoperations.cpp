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
    void outcomes_data();
    void outcomes();
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

Q_DECLARE_METATYPE(Outcome)

void TestExtraFolderOperations::outcomes_data() {
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("folders");
    // Done: answered Yes if asked; Declined: answered No; Refused: no password given.
    QTest::addColumn<Outcome>("outcome");
    QTest::addColumn<QString>("error");
    QTest::addColumn<QStringList>("expected");

    const QString rmMkext = "/bin/rm|-R|R/Extra/Extensions.mkext";
    const QString mvBack = "/bin/mv|R/Extra/KextStore|R/Extra/Extensions";
    const QString mvCreate = "/bin/mv|R/Extra/Extensions|R/Extra/KextStore";
    const QString build =
        "/usr/sbin/kextcache|-v|1|-a|i386|-a|x86_64|-m|R/Extra/Extensions.mkext|R/Extra/KextStore";
    const QStringList all{"Extra/Extensions", "Extra/KextStore", "Extra/Extensions.mkext"};
    const QStringList none;

    QTest::newRow("bring back with an mkext")
        << "bring back" << QStringList{"Extra/KextStore", "Extra/Extensions.mkext"} << Outcome::Done
        << "" << QStringList{rmMkext, mvBack};
    QTest::newRow("bring back without an mkext") << "bring back" << QStringList{"Extra/KextStore"}
                                                 << Outcome::Done << "" << QStringList{mvBack};
    // mv does not look whether the target is there already: that is what the user asked.
    QTest::newRow("create") << "create" << QStringList{"Extra/Extensions", "Extra/KextStore"}
                            << Outcome::Done << "" << QStringList{mvCreate, build};
    // An Extra folder without kexts is still hidden or shown.
    QTest::newRow("hide") << "hide" << QStringList{"Extra"} << Outcome::Done << ""
                          << QStringList{"/usr/bin/chflags|hidden|R/Extra"};
    QTest::newRow("show") << "show" << QStringList{"Extra"} << Outcome::Done << ""
                          << QStringList{"/usr/bin/chflags|nohidden|R/Extra"};
    // Only Yes runs anything (the window's rows answer create with No and Escape).
    QTest::newRow("bring back, No") << "bring back" << all << Outcome::Declined << "" << none;
    // A missing folder is told before any question or password.
    QTest::newRow("bring back without KextStore")
        << "bring back" << QStringList{"Extra/Extensions", "Extra/10.6/KextStore"}
        << Outcome::Missing << "No Extra/KextStore found." << none;
    QTest::newRow("create without Extensions")
        << "create" << QStringList{"Extra/KextStore", "Extra/10.6/Extensions"} << Outcome::Missing
        << "No Extra/Extensions found." << none;
    QTest::newRow("hide without Extra")
        << "hide" << QStringList{"System/Library"} << Outcome::Missing
        << "No Extra folder on selected disk." << none;
    // A refused password ends it silently.
    QTest::newRow("bring back, refused") << "bring back" << all << Outcome::Refused << "" << none;
    QTest::newRow("create, refused") << "create" << all << Outcome::Refused << "" << none;
    QTest::newRow("show, refused") << "show" << all << Outcome::Refused << "" << none;
}

void TestExtraFolderOperations::outcomes() {
    QFETCH(QString, command);
    QFETCH(QStringList, folders);
    QFETCH(Outcome, outcome);
    QFETCH(QString, error);
    QFETCH(QStringList, expected);
    Menu m(folders, outcome != Outcome::Refused);
    const QString question = command == "bring back" ? bringBackQuestion
                             : command == "create"   ? createQuestion
                                                     : QString();
    const bool asks = !question.isEmpty() && outcome != Outcome::Missing;

    const Outcome first = start(m.ops, command);
    QCOMPARE(m.view.questions, asks ? QStringList{question} : QStringList{});
    if (asks) {
        QCOMPARE(first, Outcome::Asking);
        // Nothing happens while the question is open.
        QCOMPARE(m.executor.authorizeCalls, 0);
        QVERIFY(m.executor.commands.isEmpty());
        m.view.pendingAnswer(outcome == Outcome::Declined ? ExtraFolderView::noCode
                                                          : ExtraFolderView::yesCode);
    }
    QCOMPARE(asks ? m.ops.lastAnswer() : first, outcome);
    const bool passwordAsked = outcome == Outcome::Done || outcome == Outcome::Refused;
    QCOMPARE(m.executor.authorizeCalls, passwordAsked ? 1 : 0);
    QCOMPARE(m.executor.commands, m.box.commands(expected));
    QCOMPARE(m.view.errors, error.isEmpty() ? QStringList{} : QStringList{error});
    // Only a conversion changes what the option boxes depend on; its root is chosen
    // again once answered.
    const bool converted = asks && outcome == Outcome::Done;
    QCOMPARE(m.view.reevaluations, converted ? 1 : 0);
    if (outcome == Outcome::Done)
        QCOMPARE(m.view.roots, QStringList(converted ? 2 : 1, m.box.rootPath()));
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

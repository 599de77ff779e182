#include "WindowFixture.h"

#include <QCheckBox>
#include <QComboBox>
#include <QTest>

// The two three-state option groups of the maintenance page, driven by real clicks.
class TestOptionGroups : public QObject {
    Q_OBJECT
private slots:
    void childClicks_data();
    void childClicks();
    void parentClicks_data();
    void parentClicks();
    void mixedParentClickedTwice();
    void parentClearedWhileMixed();
    void disabledChildStep_data();
    void disabledChildStep();
};

namespace {
struct Group {
    QCheckBox *parent;
    QCheckBox *first;
    QCheckBox *second;
};

Group group(const WindowFixture &f, const QString &name) {
    if (name == QLatin1String("Extra"))
        return {f.find<QCheckBox>("cbExtra"), f.find<QCheckBox>("cbERP"),
                f.find<QCheckBox>("cbERM")};
    return {f.find<QCheckBox>("cbSLE"), f.find<QCheckBox>("cbSLERP"), f.find<QCheckBox>("cbSLERC")};
}

} // namespace

void TestOptionGroups::childClicks_data() {
    QTest::addColumn<QString>("groupName");
    QTest::addColumn<bool>("firstOn");
    QTest::addColumn<bool>("secondOn");
    QTest::addColumn<bool>("clickFirst");
    QTest::addColumn<int>("parentState");
    QTest::addColumn<bool>("parentTristate");

    for (const char *g : {"Extra", "SLE"}) {
        const QString name = QLatin1String(g);
        auto row = [&](const char *what) -> QTestData & {
            return QTest::addRow("%s: %s", g, what);
        };
        row("first on, other off -> mixed")
            << name << false << false << true << int(Qt::PartiallyChecked) << true;
        row("second on, other off -> mixed")
            << name << false << false << false << int(Qt::PartiallyChecked) << true;
        row("both on -> on") << name << false << true << true << int(Qt::Checked) << false;
        row("first off again -> mixed")
            << name << true << true << true << int(Qt::PartiallyChecked) << true;
        row("both off -> off") << name << true << false << true << int(Qt::Unchecked) << false;
        row("second completes -> on")
            << name << true << false << false << int(Qt::Checked) << false;
    }
}

void TestOptionGroups::childClicks() {
    QFETCH(QString, groupName);
    QFETCH(bool, firstOn);
    QFETCH(bool, secondOn);
    QFETCH(bool, clickFirst);
    QFETCH(int, parentState);
    QFETCH(bool, parentTristate);

    WindowFixture f;
    const Group g = group(f, groupName);
    g.first->setChecked(firstOn);
    g.second->setChecked(secondOn);
    (clickFirst ? g.first : g.second)->click();

    QCOMPARE(int(g.parent->checkState()), parentState);
    QCOMPARE(g.parent->isTristate(), parentTristate);
}

void TestOptionGroups::parentClicks_data() {
    QTest::addColumn<QString>("groupName");
    QTest::addColumn<bool>("firstOn");
    QTest::addColumn<bool>("secondOn");
    QTest::addColumn<int>("childState");

    for (const char *g : {"Extra", "SLE"}) {
        const QString name = QLatin1String(g);
        // The parent's state comes from its children, as the user left them.
        QTest::addRow("%s: off parent turns both on", g)
            << name << false << false << int(Qt::Checked);
        QTest::addRow("%s: on parent turns both off", g)
            << name << true << true << int(Qt::Unchecked);
        QTest::addRow("%s: mixed parent turns both on", g)
            << name << true << false << int(Qt::Checked);
        QTest::addRow("%s: mixed parent (second on) turns both on", g)
            << name << false << true << int(Qt::Checked);
    }
}

void TestOptionGroups::parentClicks() {
    QFETCH(QString, groupName);
    QFETCH(bool, firstOn);
    QFETCH(bool, secondOn);
    QFETCH(int, childState);

    WindowFixture f;
    const Group g = group(f, groupName);
    // Reach the starting state through the children, as a user would.
    if (firstOn)
        g.first->click();
    if (secondOn)
        g.second->click();
    g.parent->click();

    QCOMPARE(int(g.first->checkState()), childState);
    QCOMPARE(int(g.second->checkState()), childState);
    QCOMPARE(int(g.parent->checkState()), childState);
    QVERIFY(!g.parent->isTristate());
}

void TestOptionGroups::mixedParentClickedTwice() {
    WindowFixture f;
    const Group g = group(f, QStringLiteral("Extra"));
    g.second->click();
    QCOMPARE(g.parent->checkState(), Qt::PartiallyChecked);
    g.parent->click();
    QCOMPARE(g.parent->checkState(), Qt::Checked);
    // Once the mixed state is no longer allowed, the next click goes to off, not mixed.
    g.parent->click();
    QCOMPARE(g.parent->checkState(), Qt::Unchecked);
    QCOMPARE(g.first->checkState(), Qt::Unchecked);
    QCOMPARE(g.second->checkState(), Qt::Unchecked);
}

void TestOptionGroups::parentClearedWhileMixed() {
    // A volume without Extra clears the boxes of a mixed group; once the volume is
    // usable again, the parent's click turns the whole group on.
    WindowFixture f;
    const Group g = group(f, QStringLiteral("Extra"));
    g.first->click();
    f.makeVolume(QStringLiteral("Bare"), {"System/Library/Extensions"});
    f.makeVolume(QStringLiteral("Boot"), {"Extra/Extensions"});
    auto *volumes = f.find<QComboBox>("DiskSelMain");
    volumes->addItems({QStringLiteral("Bare"), QStringLiteral("Boot")});
    f.delegate->DiskSelectorMaintenance(volumes);
    QCOMPARE(g.parent->checkState(), Qt::Unchecked);
    volumes->setCurrentIndex(1);
    f.delegate->DiskSelectorMaintenance(volumes);

    g.parent->click();
    QCOMPARE(g.first->checkState(), Qt::Checked);
    QCOMPARE(g.second->checkState(), Qt::Checked);
    QCOMPARE(g.parent->checkState(), Qt::Checked);
}

void TestOptionGroups::disabledChildStep_data() {
    QTest::addColumn<QString>("groupName");
    QTest::addColumn<int>("secondAfter");
    QTest::addColumn<int>("parentAfter");
    // Extra: the unavailable mkext rebuild is cleared, the parent keeps "on".
    QTest::newRow("Extra clears a disabled rebuild")
        << "Extra" << int(Qt::Unchecked) << int(Qt::Checked);
    // S/L/E has no such step: the disabled cache rebuild stays on.
    QTest::newRow("SLE keeps a disabled rebuild") << "SLE" << int(Qt::Checked) << int(Qt::Checked);
}

void TestOptionGroups::disabledChildStep() {
    QFETCH(QString, groupName);
    QFETCH(int, secondAfter);
    QFETCH(int, parentAfter);

    WindowFixture f;
    const Group g = group(f, groupName);
    g.second->setChecked(true);
    g.second->setEnabled(false);
    g.first->click();

    QCOMPARE(int(g.second->checkState()), secondAfter);
    QCOMPARE(int(g.parent->checkState()), parentAfter);
    QCOMPARE(g.first->checkState(), Qt::Checked);
}

QTEST_MAIN(TestOptionGroups)
#include "tst_optiongroups.moc"

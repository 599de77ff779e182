#include "WindowFixture.h"

#include <QCheckBox>
#include <QComboBox>
#include <QTest>

// The two three-state option groups of the maintenance page, driven by real clicks.
class TestOptionGroups : public QObject {
    Q_OBJECT
private slots:
    void clicks_data();
    void clicks();
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

void TestOptionGroups::clicks_data() {
    QTest::addColumn<QString>("groupName");
    QTest::addColumn<QString>("clicks"); // from all off: 1 and 2 the children, P the parent
    QTest::addColumn<QString>("states"); // first, second, parent

    for (const char *g : {"Extra", "SLE"}) {
        const QString name = QLatin1String(g);
        auto row = [&](const char *what) -> QTestData & {
            return QTest::addRow("%s: %s", g, what);
        };
        row("first on -> mixed") << name << "1"
                                 << "on off mixed";
        row("second on -> mixed") << name << "2"
                                  << "off on mixed";
        row("both on -> on") << name << "21"
                             << "on on on";
        row("second completes -> on") << name << "12"
                                      << "on on on";
        row("first off again -> mixed") << name << "121"
                                        << "off on mixed";
        row("both off -> off") << name << "11"
                               << "off off off";
        row("off parent turns both on") << name << "P"
                                        << "on on on";
        row("on parent turns both off") << name << "12P"
                                        << "off off off";
        row("mixed parent turns both on") << name << "1P"
                                          << "on on on";
        row("mixed parent (second on) turns both on") << name << "2P"
                                                      << "on on on";
        // Once the mixed state is no longer allowed, the next click goes to off, not mixed.
        row("mixed parent clicked twice") << name << "2PP"
                                          << "off off off";
    }
}

void TestOptionGroups::clicks() {
    QFETCH(QString, groupName);
    QFETCH(QString, clicks);
    QFETCH(QString, states);

    WindowFixture f;
    const Group g = group(f, groupName);
    for (const QChar click : clicks)
        (click == '1' ? g.first : click == '2' ? g.second : g.parent)->click();

    auto name = [](const QCheckBox *box) {
        const Qt::CheckState state = box->checkState();
        return QLatin1String(state == Qt::Checked     ? "on"
                             : state == Qt::Unchecked ? "off"
                                                      : "mixed");
    };
    QCOMPARE(QStringList({name(g.first), name(g.second), name(g.parent)}).join(' '), states);
    QCOMPARE(g.parent->isTristate(), g.parent->checkState() == Qt::PartiallyChecked);
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

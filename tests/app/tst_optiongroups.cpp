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
    QCheckBox *parent, *first, *second;
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

    const struct {
        const char *what, *clicks, *states;
    } rows[] = {
        {"first on -> mixed", "1", "on off mixed"},
        {"both on -> on", "12", "on on on"},
        {"first off again -> mixed", "121", "off on mixed"},
        {"both off -> off", "11", "off off off"},
        {"off parent turns both on", "P", "on on on"},
        {"on parent turns both off", "12P", "off off off"},
        {"mixed parent turns both on", "1P", "on on on"},
        // Once the mixed state is no longer allowed, the next click goes to off, not mixed.
        {"mixed parent clicked twice", "2PP", "off off off"},
    };
    for (const char *name : {"Extra", "SLE"}) {
        for (const auto &row : rows)
            QTest::addRow("%s: %s", name, row.what)
                << QString::fromLatin1(name) << QString::fromLatin1(row.clicks)
                << QString::fromLatin1(row.states);
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

// A volume without Extra clears the boxes of a mixed group; once the volume is usable
// again, the parent's click turns the whole group on.
void TestOptionGroups::parentClearedWhileMixed() {
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
    for (const QCheckBox *box : {g.first, g.second, g.parent})
        QCOMPARE(box->checkState(), Qt::Checked);
}

void TestOptionGroups::disabledChildStep_data() {
    QTest::addColumn<QString>("groupName");
    QTest::addColumn<bool>("secondStaysOn");
    // Extra clears the unavailable mkext rebuild; the parent still shows "on".
    QTest::newRow("Extra clears a disabled rebuild") << QString("Extra") << false;
    // S/L/E has no such step: the disabled cache rebuild stays on.
    QTest::newRow("SLE keeps a disabled rebuild") << QString("SLE") << true;
}

void TestOptionGroups::disabledChildStep() {
    QFETCH(QString, groupName);
    QFETCH(bool, secondStaysOn);

    WindowFixture f;
    const Group g = group(f, groupName);
    g.second->setChecked(true);
    g.second->setEnabled(false);
    g.first->click();

    QCOMPARE(g.second->checkState(), secondStaysOn ? Qt::Checked : Qt::Unchecked);
    QCOMPARE(g.parent->checkState(), Qt::Checked);
    QCOMPARE(g.first->checkState(), Qt::Checked);
}

QTEST_MAIN(TestOptionGroups)
#include "tst_optiongroups.moc"

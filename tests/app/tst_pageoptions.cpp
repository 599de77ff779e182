#include "WindowFixture.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QRadioButton>
#include <QTest>

// The options of the maintenance and installation pages: the two three-state option
// groups driven by real clicks, and on real folder trees which options and destinations a
// volume allows, the version menu, and the two popups following each other.
class TestPageOptions : public QObject {
    Q_OBJECT
private slots:
    void clicks_data();
    void clicks();
    void tables_data();
    void tables();
    void popupsFollowEachOther();
    void versionMenuFollowsChosenVolume();
    void checkVer_data();
    void checkVer();
    void destinationActions();
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
void addVolumes(WindowFixture &f, const QStringList &titles) {
    f.find<QComboBox>("DiskSelMain")->addItems(titles);
    f.find<QComboBox>("DiskSelInst")->addItems(titles);
}

QString destination(const WindowFixture &f) {
    QStringList on;
    for (const char *name : {"inExtra", "inSLE", "inDesktop"}) {
        if (f.find<QRadioButton>(name)->isChecked())
            on << QLatin1String(name);
    }
    return on.isEmpty() ? QStringLiteral("none") : on.join(QLatin1Char('+'));
}

QList<bool> versionItemsVisible(const WindowFixture &f) {
    QList<bool> visible;
    for (const char *name : {"MI_Ver104", "MI_Ver105", "MI_Ver106", "MI_Ver107", "MI_VerSpacer"})
        visible << f.find<QAction>(name)->isVisible();
    return visible;
}
} // namespace

void TestPageOptions::clicks_data() {
    QTest::addColumn<QString>("groupName");
    // From all off: 1 and 2 click the children, P the parent; V chooses a volume with
    // neither Extra nor S/L/E, then one with both; D ticks the second step and makes it
    // unavailable.
    QTest::addColumn<QString>("clicks");
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
        {"a bare volume clears a mixed group", "1V", "off off off"},
        {"the cleared parent turns both on", "1VP", "on on on"},
    };
    for (const char *name : {"Extra", "SLE"}) {
        for (const auto &row : rows)
            QTest::addRow("%s: %s", name, row.what)
                << QString::fromLatin1(name) << QString::fromLatin1(row.clicks)
                << QString::fromLatin1(row.states);
    }
    // Only Extra clears an unavailable step (its mkext rebuild); the parent still shows on.
    QTest::newRow("Extra: a disabled step is cleared") << "Extra"
                                                       << "D1"
                                                       << "on off on";
    QTest::newRow("SLE: a disabled step stays") << "SLE"
                                                << "D1"
                                                << "on on on";
}

void TestPageOptions::clicks() {
    QFETCH(QString, groupName);
    QFETCH(QString, clicks);
    QFETCH(QString, states);

    WindowFixture f;
    f.makeVolume(QStringLiteral("Bare"), {});
    f.makeVolume(QStringLiteral("Boot"), {"Extra/Extensions", "System/Library/Extensions"});
    auto *volumes = f.find<QComboBox>("DiskSelMain");
    volumes->addItems({QStringLiteral("Bare"), QStringLiteral("Boot")});
    const Group g = group(f, groupName);
    for (const QChar click : clicks) {
        if (click == 'V') {
            for (int i : {0, 1}) {
                volumes->setCurrentIndex(i);
                f.delegate->DiskSelectorMaintenance(volumes);
            }
        } else if (click == 'D') {
            g.second->setChecked(true);
            g.second->setEnabled(false);
        } else {
            (click == '1' ? g.first : click == '2' ? g.second : g.parent)->click();
        }
    }

    auto name = [](const QCheckBox *box) {
        const Qt::CheckState state = box->checkState();
        return QLatin1String(state == Qt::Checked     ? "on"
                             : state == Qt::Unchecked ? "off"
                                                      : "mixed");
    };
    QCOMPARE(QStringList({name(g.first), name(g.second), name(g.parent)}).join(' '), states);
    // Clearing for a volume leaves the parent three-state; its next click still turns the
    // group on, as the 1VP rows show.
    if (!clicks.contains(QLatin1Char('V')))
        QCOMPARE(g.parent->isTristate(), g.parent->checkState() == Qt::PartiallyChecked);
}

void TestPageOptions::tables_data() {
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<bool>("sleUsable");
    QTest::addColumn<bool>("extraUsable");
    QTest::addColumn<QString>("destination");

    QTest::newRow("Extra and S/L/E") << QStringList{"Extra/Extensions", "System/Library/Extensions"}
                                     << true << true << "inExtra";
    QTest::newRow("KextStore only") << QStringList{"Extra/KextStore"} << false << true << "inExtra";
    QTest::newRow("S/L/E only") << QStringList{"System/Library/Extensions"} << true << false
                                << "inSLE";
    QTest::newRow("neither") << QStringList{"Extra", "System/Library"} << false << false << "none";
}

void TestPageOptions::tables() {
    QFETCH(QStringList, folders);
    QFETCH(bool, sleUsable);
    QFETCH(bool, extraUsable);
    QFETCH(QString, destination);

    WindowFixture f;
    f.makeVolume(QStringLiteral("Mac HD"), folders);
    addVolumes(f, {QStringLiteral("Mac HD")});
    for (const char *name : {"cbExtra", "cbERP", "cbERM", "cbSLE", "cbSLERP", "cbSLERC"})
        f.find<QCheckBox>(name)->setChecked(true);
    f.find<QRadioButton>("inDesktop")->setChecked(true);

    f.delegate->DiskSelectorMaintenance(f.find<QComboBox>("DiskSelMain"));

    QCOMPARE(f.delegate->rp, f.paths.volumeRoot(QStringLiteral("Mac HD")));
    for (const char *name :
         {"cbSLE", "cbSLERP", "cbSLERC", "inSLE", "cbExtra", "cbERP", "cbERM", "inExtra"}) {
        const bool usable = QByteArray(name).contains("SLE") ? sleUsable : extraUsable;
        auto *box = f.find<QAbstractButton>(name);
        QVERIFY2(box->isEnabled() == usable, name);
        // Ticked options stay ticked where they apply and are cleared where they don't.
        QVERIFY2(qobject_cast<QRadioButton *>(box) || box->isChecked() == usable, name);
    }
    QCOMPARE(f.find<QAction>("MI_HideExtra")->isEnabled(), extraUsable);
    QCOMPARE(f.find<QAction>("MI_ShowExtra")->isEnabled(), extraUsable);
    QCOMPARE(::destination(f), destination);
}

// Each popup moves the other; a running maintenance keeps its popup disabled, while the
// desktop destination's disabling ends with a choice on the maintenance page.
void TestPageOptions::popupsFollowEachOther() {
    WindowFixture f;
    f.makeVolume(QStringLiteral("One"), {"System/Library/Extensions"});
    f.makeVolume(QStringLiteral("Two's disk"), {"Extra/Extensions"});
    addVolumes(f, {QStringLiteral("One"), QStringLiteral("Two's disk")});
    auto *main = f.find<QComboBox>("DiskSelMain");
    auto *inst = f.find<QComboBox>("DiskSelInst");
    main->setEnabled(false);
    inst->setCurrentIndex(1);
    emit inst->activated(1);
    QCOMPARE(main->currentText(), QStringLiteral("Two's disk"));
    QVERIFY(!main->isEnabled());
    QCOMPARE(f.delegate->rp, f.paths.volumesDir() + QStringLiteral("/Two's disk"));
    QCOMPARE(::destination(f), QStringLiteral("inExtra"));

    main->setEnabled(true);
    inst->setEnabled(false);
    main->setCurrentIndex(0);
    emit main->activated(0);
    QCOMPARE(inst->currentText(), QStringLiteral("One"));
    QVERIFY(inst->isEnabled());
    QCOMPARE(::destination(f), QStringLiteral("inSLE"));
}

// The version menu shows the chosen volume's version folders, whichever popup chose it;
// re-evaluating without a popup (after a task) leaves it alone.
void TestPageOptions::versionMenuFollowsChosenVolume() {
    WindowFixture f;
    f.makeVolume(QStringLiteral("HD"), {"Extra/10.5", "Extra/10.7/Extensions"});
    f.makeVolume(QStringLiteral("Plain"), {"Extra/Extensions"});
    addVolumes(f, {QStringLiteral("HD"), QStringLiteral("Plain")});
    f.find<QAction>("MI_Ver105")->setChecked(true);
    f.find<QAction>("MI_VerIndpd")->setChecked(false);

    f.delegate->DiskSelectorMaintenance(f.find<QComboBox>("DiskSelMain"));
    const QList<bool> hd{false, true, false, true, true};
    QCOMPARE(versionItemsVisible(f), hd);
    QVERIFY(f.find<QAction>("MI_VerIndpd")->isChecked());
    QVERIFY(!f.find<QAction>("MI_Ver105")->isChecked());

    f.delegate->DiskSelectorMaintenance(nullptr);
    f.find<QComboBox>("DiskSelInst")->setCurrentIndex(1);
    f.delegate->DiskSelectorInstallation(nullptr);
    QCOMPARE(versionItemsVisible(f), hd);
    f.delegate->DiskSelectorInstallation(f.find<QComboBox>("DiskSelInst"));
    QCOMPARE(versionItemsVisible(f), QList<bool>(5, false));
}

void TestPageOptions::checkVer_data() {
    QTest::addColumn<QString>("item");
    QTest::addColumn<QString>("extraVer");
    QTest::addColumn<bool>("extraUsable");
    QTest::newRow("10.6 without kexts") << QString("MI_Ver106") << QString("10.6") << false;
    QTest::newRow("version independent") << QString("MI_VerIndpd") << QString() << true;
}

void TestPageOptions::checkVer() {
    QFETCH(QString, item);
    QFETCH(QString, extraVer);
    QFETCH(bool, extraUsable);

    WindowFixture f;
    f.makeVolume(QStringLiteral("HD"), {"Extra/Extensions", "Extra/10.6", "Extra/10.7/KextStore"});
    addVolumes(f, {QStringLiteral("HD")});
    f.delegate->DiskSelectorMaintenance(f.find<QComboBox>("DiskSelMain"));
    f.delegate->ExtraVer = QStringLiteral("10.4");
    const QList<bool> visible = versionItemsVisible(f);

    f.window->action(item)->trigger();

    QCOMPARE(f.delegate->ExtraVer, extraVer);
    for (const char *name : {"MI_VerIndpd", "MI_Ver104", "MI_Ver105", "MI_Ver106", "MI_Ver107"})
        QVERIFY2(f.find<QAction>(name)->isChecked() == (item == QLatin1String(name)), name);
    QCOMPARE(f.find<QCheckBox>("cbERM")->isEnabled(), extraUsable);
    QCOMPARE(versionItemsVisible(f), visible);

    // Choosing the volume again marks "version independent" but keeps evaluating in the
    // version folder chosen before, until a version is chosen again.
    emit f.find<QComboBox>("DiskSelMain")->activated(0);
    QVERIFY(f.find<QAction>("MI_VerIndpd")->isChecked());
    QCOMPARE(f.delegate->ExtraVer, extraVer);
    QCOMPARE(f.find<QCheckBox>("cbERM")->isEnabled(), extraUsable);
}

// Only the desktop destination disables the volume popup; clicking the chosen destination
// again keeps it chosen.
void TestPageOptions::destinationActions() {
    WindowFixture f;
    f.makeVolume(QStringLiteral("HD"), {"Extra/Extensions", "System/Library/Extensions"});
    addVolumes(f, {QStringLiteral("HD")});
    f.delegate->DiskSelectorMaintenance(nullptr);
    for (const char *click : {"inDesktop", "inSLE", "inDesktop", "inExtra", "inExtra"}) {
        f.find<QRadioButton>(click)->click();
        QCOMPARE(::destination(f), QString::fromLatin1(click));
        QCOMPARE(f.find<QComboBox>("DiskSelInst")->isEnabled(), qstrcmp(click, "inDesktop") != 0);
    }
}

QTEST_MAIN(TestPageOptions)
#include "tst_pageoptions.moc"

#include "WindowFixture.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QRadioButton>
#include <QTest>

// The volume selectors on real folder trees: which options and destinations a volume
// allows, the version menu, and the two popups following each other.
class TestVolumeSelectors : public QObject {
    Q_OBJECT
private slots:
    void tables_data();
    void tables();
    void popupsFollowEachOther();
    void versionMenuFollowsChosenVolume();
    void checkVer_data();
    void checkVer();
    void destinationActions();
};

namespace {
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

void TestVolumeSelectors::tables_data() {
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

void TestVolumeSelectors::tables() {
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
void TestVolumeSelectors::popupsFollowEachOther() {
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
void TestVolumeSelectors::versionMenuFollowsChosenVolume() {
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

void TestVolumeSelectors::checkVer_data() {
    QTest::addColumn<QString>("item");
    QTest::addColumn<QString>("extraVer");
    QTest::addColumn<bool>("extraUsable");
    QTest::newRow("10.6 without kexts") << QString("MI_Ver106") << QString("10.6") << false;
    QTest::newRow("10.7 with KextStore") << QString("MI_Ver107") << QString("10.7") << true;
    QTest::newRow("version independent") << QString("MI_VerIndpd") << QString() << true;
}

void TestVolumeSelectors::checkVer() {
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
void TestVolumeSelectors::destinationActions() {
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

QTEST_MAIN(TestVolumeSelectors)
#include "tst_volumeselectors.moc"

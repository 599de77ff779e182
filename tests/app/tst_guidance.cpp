#include "AlertBox.h"
#include "BundlePicker.h"
#include "MainWindow.h"
#include "QuitGuard.h"
#include "RadioTabStop.h"
#include "WindowState.h"

#include <QAction>
#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QToolBar>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {
const QStringList bundleTypes{QStringLiteral("kext"), QStringLiteral("bundle"),
                              QStringLiteral("plugin"), QStringLiteral("ppp")};

QStringList shownNames(const QTreeWidget &entries) {
    QStringList names;
    for (int row = 0; row < entries.topLevelItemCount(); ++row)
        names << entries.topLevelItem(row)->text(0) + QLatin1Char(':') +
                     entries.topLevelItem(row)->text(1);
    return names;
}

QTreeWidgetItem *entry(const QTreeWidget &entries, const QString &name) {
    const auto found = entries.findItems(name, Qt::MatchExactly);
    return found.isEmpty() ? nullptr : found.first();
}

std::unique_ptr<WindowState> stateIn(const QTemporaryDir &dir) {
    return std::make_unique<WindowState>(std::make_unique<QSettings>(
        dir.filePath(QStringLiteral("state.ini")), QSettings::IniFormat));
}

const QStringList pageItems{QStringLiteral("ti_m"), QStringLiteral("ti_i"), QStringLiteral("ti_u"),
                            QStringLiteral("ti_c"), QStringLiteral("ti_l")};
} // namespace

class TestGuidance : public QObject {
    Q_OBJECT

private slots:
    void pickerShowsFoldersOnly() {
        QTemporaryDir dir;
        for (const char *folder :
             {"b.kext", "A.Kext", "c.PLUGIN", "d.ppp", "e.bundle", "Docs", ".hidden.kext"})
            QVERIFY(QDir(dir.path()).mkpath(QLatin1String(folder)));
        QFile(dir.filePath(QStringLiteral("notes.kext"))).open(QIODevice::WriteOnly);
        BundlePicker picker(nullptr, bundleTypes, true);
        picker.setFolder(dir.path());
        QCOMPARE(
            shownNames(*picker.findChild<QTreeWidget *>()),
            QStringList({"A.Kext:Kernel extension", "b.kext:Kernel extension", "c.PLUGIN:Plug-in",
                         "d.ppp:PPP plug-in", "Docs:Folder", "e.bundle:Bundle"}));
    }

    void pickerChoices_data() {
        QTest::addColumn<QString>("how");
        QTest::addColumn<QStringList>("names"); // selected, or typed
        QTest::addColumn<QStringList>("chosen");
        QTest::addColumn<QString>("folderAfter");
        QTest::addColumn<QString>("refused"); // a name the message must hold

        const QStringList none;
        QTest::newRow("several bundles") << "open" << QStringList{"Foo.kext", "Bar.bundle"}
                                         << QStringList{"Bar.bundle", "Foo.kext"} << ""
                                         << "";
        QTest::newRow("open on a folder") << "open" << QStringList{"Docs"} << none << "Docs"
                                          << "";
        QTest::newRow("enter on a folder") << "enter" << QStringList{"Docs"} << none << "Docs"
                                           << "";
        QTest::newRow("double click on a folder")
            << "double" << QStringList{"Docs"} << none << "Docs"
            << "";
        QTest::newRow("enter on a bundle")
            << "enter" << QStringList{"Foo.kext"} << QStringList{"Foo.kext"} << ""
            << "";
        QTest::newRow("double click on a bundle")
            << "double" << QStringList{"Foo.kext"} << QStringList{"Foo.kext"} << ""
            << "";
        QTest::newRow("a folder among bundles")
            << "open" << QStringList{"Foo.kext", "Docs"} << none << ""
            << "\u201cDocs\u201d";
        QTest::newRow("typed folder") << "type" << QStringList{"Docs"} << none << "Docs"
                                      << "";
        QTest::newRow("typed bundle")
            << "type" << QStringList{"Docs/Inner.plugin"} << QStringList{"Docs/Inner.plugin"} << ""
            << "";
        QTest::newRow("typed file") << "type" << QStringList{"Docs/readme.txt"} << none << ""
                                    << "\u201creadme.txt\u201d";
        QTest::newRow("typed nothing there") << "type" << QStringList{"Gone"} << none << ""
                                             << "Gone\u201d does not exist";
    }

    void pickerChoices() {
        QFETCH(QString, how);
        QFETCH(QStringList, names);
        QFETCH(QStringList, chosen);
        QFETCH(QString, folderAfter);
        QFETCH(QString, refused);

        QTemporaryDir dir;
        for (const char *folder : {"Foo.kext", "Bar.bundle", "Docs/Inner.plugin"})
            QVERIFY(QDir(dir.path()).mkpath(QLatin1String(folder)));
        QFile(dir.filePath(QStringLiteral("Docs/readme.txt"))).open(QIODevice::WriteOnly);
        BundlePicker picker(nullptr, bundleTypes, true);
        picker.setFolder(dir.path());
        picker.show();
        QVERIFY(QTest::qWaitForWindowExposed(&picker));
        QSignalSpy refusals(&picker, &BundlePicker::refused);
        auto *entries = picker.findChild<QTreeWidget *>();

        if (how == QLatin1String("type")) {
            auto *location = picker.findChild<QLineEdit *>(QStringLiteral("location"));
            location->setText(names.first());
            QTest::keyClick(location, Qt::Key_Return);
        } else {
            for (const QString &name : names)
                entry(*entries, name)->setSelected(true);
            QTreeWidgetItem *item = entry(*entries, names.first());
            entries->setCurrentItem(item, 0, QItemSelectionModel::NoUpdate);
            if (how == QLatin1String("open"))
                picker.findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Open)->click();
            else if (how == QLatin1String("enter"))
                QTest::keyClick(entries, Qt::Key_Return);
            else {
                // The view takes a double click only on the row the button went down on.
                const QPoint at = entries->visualItemRect(item).center();
                QTest::mousePress(entries->viewport(), Qt::LeftButton, {}, at);
                QTest::mouseDClick(entries->viewport(), Qt::LeftButton, {}, at);
            }
        }

        QStringList expected;
        for (const QString &name : chosen)
            expected << dir.filePath(name);
        QCOMPARE(picker.result() == QDialog::Accepted, !chosen.isEmpty());
        QCOMPARE(picker.chosenBundles(), expected);
        QCOMPARE(picker.folder(), folderAfter.isEmpty() ? QDir(dir.path()).absolutePath()
                                                        : dir.filePath(folderAfter));
        QCOMPARE(refusals.size(), refused.isEmpty() ? 0 : 1);
        if (!refused.isEmpty()) {
            QVERIFY2(refusals.first().first().toString().contains(refused),
                     qPrintable(refusals.first().first().toString()));
            auto *box = picker.findChild<QMessageBox *>();
            QVERIFY(box && box->isVisible());
        }
    }

    void quitWaitsForTheTask_data() {
        QTest::addColumn<bool>("running");
        QTest::addColumn<QString>("answer");
        QTest::addColumn<bool>("closedAtOnce");
        QTest::addColumn<bool>("closedAtTheEnd");
        QTest::newRow("no task") << false << "" << true << true;
        QTest::newRow("quit when it ends") << true << "quit" << false << true;
        QTest::newRow("cancelled") << true << "cancel" << false << false;
    }

    void quitWaitsForTheTask() {
        QFETCH(bool, running);
        QFETCH(QString, answer);
        QFETCH(bool, closedAtOnce);
        QFETCH(bool, closedAtTheEnd);

        QWidget window;
        QuitGuard guard(window, [&running] { return running; });
        window.show();
        window.close();
        QCOMPARE(!window.isVisible(), closedAtOnce);
        if (!answer.isEmpty()) {
            QMessageBox *question = guard.question();
            QVERIFY(question && question->isVisible());
            QCOMPARE(question->text(), QStringLiteral("A task is running. Quit when it ends?"));
            // Asking again while the question is open does not stack a second one.
            window.close();
            QCOMPARE(window.findChildren<QMessageBox *>().size(), 1);
            QAbstractButton *button = answer == QLatin1String("quit")
                                          ? question->buttons().first()
                                          : question->button(QMessageBox::Cancel);
            button->click();
            QVERIFY(window.isVisible());
        }
        running = false;
        guard.taskEnded();
        QCOMPARE(!window.isVisible(), closedAtTheEnd);
    }

    void windowStateLasts() {
        QTemporaryDir dir;
        {
            MainWindow window;
            window.resize(700, 500);
            window.action(QStringLiteral("ti_u"))->setVisible(false);
            window.findChild<QToolBar *>(QStringLiteral("ToolBar"))
                ->setToolButtonStyle(Qt::ToolButtonTextOnly);
            stateIn(dir)->save(window, *window.findChild<QToolBar *>(QStringLiteral("ToolBar")),
                               pageItems, QStringLiteral("ti_c"));
        }
        MainWindow window;
        auto *toolbar = window.findChild<QToolBar *>(QStringLiteral("ToolBar"));
        QCOMPARE(stateIn(dir)->restore(window, *toolbar, pageItems), QStringLiteral("ti_c"));
        QCOMPARE(window.size(), QSize(700, 500));
        QVERIFY(!window.action(QStringLiteral("ti_u"))->isVisible());
        QVERIFY(window.action(QStringLiteral("ti_i"))->isVisible());
        QCOMPARE(toolbar->toolButtonStyle(), Qt::ToolButtonTextOnly);

        // The first run has nothing to restore and leaves the window as built.
        QTemporaryDir fresh;
        MainWindow first;
        const QSize built = first.size();
        QCOMPARE(stateIn(fresh)->restore(
                     first, *first.findChild<QToolBar *>(QStringLiteral("ToolBar")), pageItems),
                 QString());
        QCOMPARE(first.size(), built);
    }

    void radioGroupIsOneTabStop() {
        QWidget window;
        auto *layout = new QVBoxLayout(&window);
        auto *before = new QLineEdit(&window);
        layout->addWidget(before);
        QList<QAbstractButton *> radios;
        for (const char *name : {"a", "b", "c"}) {
            auto *radio = new QRadioButton(QLatin1String(name), &window);
            radio->setAutoExclusive(false);
            layout->addWidget(radio);
            radios << radio;
        }
        auto *after = new QPushButton(QStringLiteral("after"), &window);
        layout->addWidget(after);
        radios[1]->setChecked(true);
        RadioTabStop stop(radios, &window);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        before->setFocus();

        const auto keyTo = [](Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
            QTest::keyClick(QApplication::focusWidget(), key, modifiers);
            return QApplication::focusWidget();
        };
        QCOMPARE(keyTo(Qt::Key_Tab), radios[1]);
        QCOMPARE(keyTo(Qt::Key_Tab), after);
        QCOMPARE(keyTo(Qt::Key_Backtab), radios[1]);
        QCOMPARE(keyTo(Qt::Key_Down), radios[2]);
        QCOMPARE(keyTo(Qt::Key_Down), radios[0]);
        radios[2]->setEnabled(false);
        QCOMPARE(keyTo(Qt::Key_Up), radios[1]);
        QCOMPARE(keyTo(Qt::Key_Backtab), before);
    }

    void alertsAreWide() {
        QWidget window;
        window.resize(800, 600);
        window.show();
        QMessageBox *box = AlertBox::warn(&window, QStringLiteral("Selected tasks were finished."));
        box->setInformativeText(QStringLiteral("Backups are in the folder Kext Backups."));
        QVERIFY(QTest::qWaitForWindowExposed(box));
        QVERIFY2(box->width() >= AlertBox::minimumTextWidth(*box),
                 qPrintable(QString::number(box->width())));
    }
};

QTEST_MAIN(TestGuidance)
#include "tst_guidance.moc"

// Starts the real window on a sandbox, shows each of the five pages in turn and saves
// the window as <out>/<page>.png, then the Volume Health window, the Log window after an
// installation with backups, and the restore dialog; tools/screenshots.sh runs it under Xvfb.

#include "WindowLauncher.h"
#include "exec/AdminAuthentication.h"
#include "exec/CommandJournal.h"
#include "filesdrop.h"
#include "install/InstallList.h"
#include "volumes/SystemPaths.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QMainWindow>
#include <QMessageBox>
#include <QTableView>
#include <QTextStream>
#include <QTimer>
#include <QToolButton>

namespace {

const QList<QPair<const char *, const char *>> pages{{"ti_m", "maintenance"},
                                                     {"ti_i", "installation"},
                                                     {"ti_u", "unpack"},
                                                     {"ti_c", "check"},
                                                     {"ti_l", "loaded"}};

// What a user would have done on the page before looking at it, so the pictures show
// the pages at work rather than empty: kexts on the install list, a kext checked with
// its libraries, the Extra mkext listed, a loaded kext's details open.
void fillPage(QMainWindow *window, const QString &name, const QString &mac) {
    const QString home = QDir::homePath();
    const auto dropFile = [window](const QString &path) {
        if (auto *target = window->findChild<filesdrop *>())
            emit target->dropped({path});
    };
    if (name == QLatin1String("maintenance")) {
        if (auto *box = window->findChild<QCheckBox *>(QStringLiteral("cbERM")))
            box->click();
    } else if (name == QLatin1String("installation")) {
        auto *table = window->findChild<QTableView *>(QStringLiteral("tbkexts"));
        if (auto *list = table ? qobject_cast<InstallList *>(table->model()) : nullptr)
            list->append({home + QStringLiteral("/Downloads/ExampleSensors.kext"),
                          home + QStringLiteral("/Downloads/ExampleEthernet.kext")});
    } else if (name == QLatin1String("unpack")) {
        dropFile(mac + QStringLiteral("/Extra/Extensions.mkext"));
    } else if (name == QLatin1String("check")) {
        if (auto *box = window->findChild<QCheckBox *>(QStringLiteral("cbcheckdep")))
            box->setChecked(true);
        dropFile(mac + QStringLiteral("/Extra/Extensions/ExampleSensors.kext"));
    } else if (name == QLatin1String("loaded")) {
        auto *table = window->findChild<QTableView *>(QStringLiteral("tbLoaded"));
        if (table && table->model() && table->model()->rowCount() > 5)
            table->selectRow(5);
        if (auto *slide = window->findChild<QToolButton *>(QStringLiteral("buttonslide")))
            slide->click();
    }
}

QMainWindow *mainWindow() {
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *window = qobject_cast<QMainWindow *>(widget); window && window->isVisible())
            return window;
    }
    return nullptr;
}

void save(QWidget *widget, const QString &file) {
    if (!widget || !widget->grab().save(file))
        QTextStream(stderr) << "can't write " << file << Qt::endl;
}

void trigger(QMainWindow *window, const char *action) {
    if (auto *item = window->findChild<QAction *>(QLatin1String(action)))
        item->trigger();
}

// Answers every alert of a running task as a user would: yes to its question, OK to its
// closing text.
void answerAlerts(QMainWindow *window) {
    for (QMessageBox *box : window->findChildren<QMessageBox *>()) {
        if (!box->isVisible())
            continue;
        QAbstractButton *answer = box->button(QMessageBox::Ok);
        for (QAbstractButton *button : box->buttons()) {
            const QMessageBox::ButtonRole role = box->buttonRole(button);
            if (!answer && (role == QMessageBox::AcceptRole || role == QMessageBox::YesRole))
                answer = button;
        }
        if (answer)
            answer->click();
    }
}

// An installation with backups over the kexts already in Extra, so that the Log window
// has commands to show and the restore dialog a backup to offer; then both pictures.
void shootLogAndRestore(QMainWindow *window, const QString &out) {
    trigger(window, "ti_i");
    if (auto *backup = window->findChild<QCheckBox *>(QStringLiteral("cbBackup")))
        backup->setChecked(true);
    if (auto *start = window->findChild<QAbstractButton *>(QStringLiteral("bInstButton")))
        start->click();
    auto *answering = new QTimer(window);
    QObject::connect(answering, &QTimer::timeout, window, [window] { answerAlerts(window); });
    answering->start(200);
    QTimer::singleShot(5000, window, [window, out, answering] {
        answering->stop();
        trigger(window, "MI_ShowLog");
        // Wide enough for the commands' folders to show.
        if (auto *log = window->findChild<QWidget *>(QStringLiteral("LogWindow")))
            log->resize(1100, 420);
        QTimer::singleShot(500, window, [window, out] {
            auto *log = window->findChild<QWidget *>(QStringLiteral("LogWindow"));
            save(log, out + QStringLiteral("/log.png"));
            if (log)
                log->close();
            trigger(window, "MI_RestoreBackup");
            QTimer::singleShot(500, window, [window, out] {
                auto *restore = window->findChild<QWidget *>(QStringLiteral("RestoreDialog"));
                if (auto *table = window->findChild<QTableView *>(QStringLiteral("backupTable")))
                    table->selectRow(0);
                save(restore, out + QStringLiteral("/restore.png"));
                QApplication::exit(restore ? 0 : 1);
            });
        });
    });
}

// The Extra menu's Volume Health window on the started system, once its check has ended.
void shootHealth(QMainWindow *window, const QString &out) {
    trigger(window, "MI_VolumeHealth");
    QTimer::singleShot(2500, window, [window, out] {
        auto *health = window->findChild<QWidget *>(QStringLiteral("VolumeHealthWindow"));
        save(health, out + QStringLiteral("/health.png"));
        if (!health) {
            QApplication::exit(1);
            return;
        }
        health->close();
        shootLogAndRestore(window, out);
    });
}

// Shows page `index`, lets it fill itself, saves it and goes on with the next one.
void shoot(int index, const QString &out, const QString &mac) {
    QMainWindow *window = mainWindow();
    if (!window) {
        QApplication::exit(1);
        return;
    }
    if (index >= pages.size()) {
        shootHealth(window, out);
        return;
    }
    // Any alert the start-up raised (none is expected) would hide the page.
    for (QMessageBox *box : window->findChildren<QMessageBox *>())
        box->close();
    if (auto *action = window->findChild<QAction *>(QLatin1String(pages[index].first)))
        action->trigger();
    QTimer::singleShot(300, window, [window, index, mac] {
        fillPage(window, QLatin1String(pages[index].second), mac);
    });
    QTimer::singleShot(1500, window, [window, index, out, mac] {
        const QString file = out + QLatin1Char('/') + QLatin1String(pages[index].second) + ".png";
        if (!window->grab().save(file))
            QTextStream(stderr) << "can't write " << file << Qt::endl;
        shoot(index + 1, out, mac);
    });
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 3) {
        QTextStream(stderr) << "usage: kk_screenshots SANDBOX OUTDIR" << Qt::endl;
        return 2;
    }
    const SystemPaths paths(QString::fromLocal8Bit(argv[1]));
    const QString out = QDir(QString::fromLocal8Bit(argv[2])).absolutePath();
    QDir().mkpath(out);
    int qtArgc = 1;
    QApplication app(qtArgc, argv);
    QApplication::setApplicationName(QStringLiteral("KextKeeper"));
    AdminAuthentication::Config config;
    config.direct = true;
    config.environment = paths.rootEnvironment();
    AdminAuthentication session(config, nullptr, nullptr);
    const QString mac = paths.volumeRoot(QStringLiteral("Macintosh HD"));
    QTimer::singleShot(1500, &app, [out, mac] { shoot(0, out, mac); });
    // Pictures run the tasks they show, with a journal in memory only.
    CommandJournal journal;
    session.setJournal(&journal);
    return launchWindow(app, paths, session, journal);
}

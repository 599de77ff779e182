// Starts the real window on a sandbox, shows each of the five pages in turn and saves
// the window as <out>/<page>.png; tools/screenshots.sh runs it under Xvfb.

#include "WindowLauncher.h"
#include "exec/AdminAuthentication.h"
#include "volumes/SystemPaths.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QMainWindow>
#include <QMessageBox>
#include <QTextStream>
#include <QTimer>

namespace {

const QList<QPair<const char *, const char *>> pages{{"ti_m", "maintenance"},
                                                     {"ti_i", "installation"},
                                                     {"ti_u", "unpack"},
                                                     {"ti_c", "check"},
                                                     {"ti_l", "loaded"}};

QMainWindow *mainWindow() {
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *window = qobject_cast<QMainWindow *>(widget); window && window->isVisible())
            return window;
    }
    return nullptr;
}

// Shows page `index`, lets it fill itself, saves it and goes on with the next one.
void shoot(int index, const QString &out) {
    QMainWindow *window = mainWindow();
    if (!window || index >= pages.size()) {
        QApplication::exit(window ? 0 : 1);
        return;
    }
    // Any alert the start-up raised (none is expected) would hide the page.
    for (QMessageBox *box : window->findChildren<QMessageBox *>())
        box->close();
    if (auto *action = window->findChild<QAction *>(QLatin1String(pages[index].first)))
        action->trigger();
    QTimer::singleShot(700, window, [window, index, out] {
        const QString file = out + QLatin1Char('/') + QLatin1String(pages[index].second) + ".png";
        if (!window->grab().save(file))
            QTextStream(stderr) << "can't write " << file << Qt::endl;
        shoot(index + 1, out);
    });
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 3) {
        QTextStream(stderr) << "usage: kk_screenshots SANDBOX OUTDIR" << Qt::endl;
        return 2;
    }
    const SystemPaths paths(QString::fromLocal8Bit(argv[1]));
    SystemPaths::setCurrent(paths);
    const QString out = QDir(QString::fromLocal8Bit(argv[2])).absolutePath();
    QDir().mkpath(out);
    int qtArgc = 1;
    QApplication app(qtArgc, argv);
    QApplication::setApplicationName(QStringLiteral("KextKeeper"));
    AdminAuthentication::Config config;
    config.direct = true;
    config.environment = paths.rootEnvironment();
    AdminAuthentication::configureShared(config, nullptr);
    QTimer::singleShot(1500, &app, [out] { shoot(0, out); });
    return launchWindow(app, paths);
}

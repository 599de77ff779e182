#include "AppIdentity.h"

#include "AppTranslator.h"

#include <QApplication>
#include <QIcon>

void AppIdentity::apply(QApplication &app) {
    QApplication::setApplicationName(QStringLiteral("KextKeeper"));
    QApplication::setApplicationVersion(QStringLiteral(KK_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("kextkeeper"));
    // The installed theme's icon where there is one; our own copies otherwise (a build
    // folder, a Mac).
    QIcon shipped;
    for (const int size : {16, 24, 32, 48, 64, 128, 256})
        shipped.addFile(QStringLiteral(":/icons/kextkeeper-%1.png").arg(size), QSize(size, size));
    QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("kextkeeper"), shipped));
    AppTranslator::install(app, QLocale::system());
}

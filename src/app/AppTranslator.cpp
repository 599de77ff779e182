#include "AppTranslator.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QTranslator>

bool AppTranslator::install(QCoreApplication &app, const QLocale &locale) {
    auto *ours = new QTranslator(&app);
    if (!ours->load(locale, QStringLiteral("kextkeeper"), QStringLiteral("_"),
                    QStringLiteral(":/i18n"))) {
        delete ours;
        return false;
    }
    app.installTranslator(ours);
    auto *qt = new QTranslator(&app);
    if (qt->load(locale, QStringLiteral("qtbase"), QStringLiteral("_"),
                 QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        app.installTranslator(qt);
    else
        delete qt;
    return true;
}

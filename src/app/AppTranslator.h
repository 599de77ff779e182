#pragma once

#include <QLocale>

class QCoreApplication;

// The window speaks the user's language where we have a translation for it (German so
// far): ours from :/i18n, and Qt's own for its standard buttons and dialogs when the
// system has them. Texts without a translation keep their English wording, which is
// also the key they are looked up by. The command line stays English, for scripts.
class AppTranslator {
public:
    // False when there is no translation of ours for `locale` (English needs none).
    static bool install(QCoreApplication &app, const QLocale &locale);
};

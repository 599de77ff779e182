#pragma once

class QApplication;

// Who the window is to the desktop: name and version, the desktop entry it belongs to
// (kextkeeper.desktop, so the desktop groups its windows and notifications under it),
// the application icon, and the translation for the user's language.
class AppIdentity {
public:
    static void apply(QApplication &app);
};

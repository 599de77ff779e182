#pragma once

class QMessageBox;
class QString;
class QWidget;

// What every message box of the window shares. A box sizes itself to its text, and with
// an informative text that wraps it ends up so narrow that a short sentence takes three
// lines: widen() gives its text a minimum width about that of a macOS alert.
class AlertBox {
public:
    static int minimumTextWidth(const QWidget &box);
    // Call after the texts are set or before; the width holds either way.
    static void widen(QMessageBox &box);
    // A window-modal warning over `parent`, opened without blocking, gone when closed.
    static QMessageBox *warn(QWidget *parent, const QString &text);
};

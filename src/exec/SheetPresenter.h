#pragma once

#include <QString>

class QObject;

// Draws an alert sheet on a window; the application implements it with a window-modal
// message box that does not block the caller.
class SheetPresenter {
public:
    enum class Kind { Error, Info };
    virtual ~SheetPresenter() = default;
    virtual void showSheet(Kind kind, const QString &headline, const QString &text,
                           QObject *window) = 0;
};

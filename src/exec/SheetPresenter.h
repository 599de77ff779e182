#pragma once

#include <QString>
#include <functional>

class QObject;

// Draws an alert sheet on a window; the application implements it with a window-modal
// message box that does not block the caller.
class SheetPresenter {
public:
    enum class Kind { Error, Info };
    virtual ~SheetPresenter() = default;
    virtual void showSheet(Kind kind, const QString &headline, const QString &text,
                           QObject *window) = 0;

    // What a sheet may say beyond the task's own text, which stays as it is: a line below
    // it and a button that acts on it (showing the folder the line names).
    struct Extra {
        QString text;
        QString button;
        std::function<void()> action;
    };
    virtual void showSheetWithExtra(Kind kind, const QString &headline, const QString &text,
                                    QObject *window, const Extra &) {
        showSheet(kind, headline, text, window);
    }
};

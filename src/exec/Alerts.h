#pragma once

#include "exec/SheetPresenter.h"

#include <QString>

struct TaskResult;
class Notifier;
class QObject;

// How a task's end reaches the user. An error always gets a sheet and, when the
// notification service runs, a notification too; a success gets a notification when
// it can, and a sheet only when it can't.
class Alerts {
public:
    Alerts(Notifier *notifier, SheetPresenter *sheets);

    void showError(const QString &message, QObject *window);
    // `extra` goes on the sheet only; a notification carries the message alone.
    void showInfo(const QString &message, QObject *window, const SheetPresenter::Extra &extra = {});
    // A task's end: its message as an error or an information; nothing for a task that
    // ends without a word.
    void showResult(const TaskResult &result, QObject *window,
                    const SheetPresenter::Extra &extra = {});

private:
    bool notifierRuns();
    Notifier *m_notifier;
    SheetPresenter *m_sheets;
};

#pragma once

#include <QString>

class Notifier;
class QObject;
class SheetPresenter;

// How a task's end reaches the user. An error always gets a sheet and, when the
// notification service runs, a notification too; a success gets a notification when
// it can, and a sheet only when it can't.
class Alerts {
public:
    Alerts(Notifier *notifier, SheetPresenter *sheets);

    void showError(const QString &message, QObject *window);
    void showInfo(const QString &message, QObject *window);

private:
    bool notifierRuns();
    Notifier *m_notifier;
    SheetPresenter *m_sheets;
};

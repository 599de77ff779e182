#include "exec/Alerts.h"

#include "exec/Notifier.h"
#include "exec/SheetPresenter.h"
#include "exec/TaskResult.h"
#include "exec/Tr.h"

Alerts::Alerts(Notifier *notifier, SheetPresenter *sheets)
    : m_notifier(notifier), m_sheets(sheets) {}

bool Alerts::notifierRuns() {
    return m_notifier && m_notifier->isRunning();
}

void Alerts::showError(const QString &message, QObject *window) {
    if (notifierRuns())
        m_notifier->notify(kkTr("Error"), message, QStringLiteral("Task Failed"));
    if (m_sheets)
        m_sheets->showSheet(SheetPresenter::Kind::Error, kkTr("Error"), message, window);
}

void Alerts::showInfo(const QString &message, QObject *window, const SheetPresenter::Extra &extra) {
    if (notifierRuns()) {
        m_notifier->notify(kkTr("Done"), message, QStringLiteral("Task Finished"));
        return;
    }
    if (m_sheets && extra.text.isEmpty())
        m_sheets->showSheet(SheetPresenter::Kind::Info, kkTr("Done"), message, window);
    else if (m_sheets)
        m_sheets->showSheetWithExtra(SheetPresenter::Kind::Info, kkTr("Done"), message, window,
                                     extra);
}

void Alerts::showResult(const TaskResult &result, QObject *window,
                        const SheetPresenter::Extra &extra) {
    if (result.message.isEmpty())
        return;
    if (result.ok)
        showInfo(result.message, window, extra);
    else
        showError(result.message, window);
}

#include "exec/Alerts.h"

#include "exec/FailedCommands.h"
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
    if (!result.commandFailures.isEmpty()) {
        // The failures need reading, so they always come as a sheet, below the task's own
        // closing text; a notification still carries that text alone.
        const QString failures = FailedCommands::summary(result.commandFailures.size()) +
                                 QStringLiteral(":\n") +
                                 result.commandFailures.join(QLatin1Char('\n'));
        const bool ok = result.ok && !result.message.isEmpty();
        if (notifierRuns() && !result.message.isEmpty())
            m_notifier->notify(ok ? kkTr("Done") : kkTr("Error"), result.message,
                               ok ? QStringLiteral("Task Finished")
                                  : QStringLiteral("Task Failed"));
        const QString text = result.message.isEmpty()
                                 ? failures
                                 : result.message + QStringLiteral("\n\n") + failures;
        if (m_sheets)
            m_sheets->showSheetWithExtra(ok ? SheetPresenter::Kind::Info
                                            : SheetPresenter::Kind::Error,
                                         ok ? kkTr("Done") : kkTr("Error"), text, window, extra);
        return;
    }
    if (result.message.isEmpty())
        return;
    if (result.ok)
        showInfo(result.message, window, extra);
    else
        showError(result.message, window);
}

#include "cli/TerminalMaintenanceView.h"

void TerminalMaintenanceView::setStatus(const QString &text) {
    // The window empties its status line at the end; a terminal has no line to empty.
    if (!text.isEmpty())
        m_c.note(text);
}

void TerminalMaintenanceView::commandsFailed(const QStringList &failures) {
    failed = true;
    m_c.tellFailures(m_verb, failures);
}

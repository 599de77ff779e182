#include "cli/TerminalInstallView.h"

#include "install/InstallList.h"

void TerminalInstallView::bundleStarted(int index, int count, const QString &path) {
    m_c.note(QStringLiteral("[%1/%2] ").arg(index + 1).arg(count) + InstallList::bundleName(path));
}

void TerminalInstallView::commandsFailed(const QStringList &failures) {
    failed = true;
    m_c.tellFailures(m_verb, failures);
}

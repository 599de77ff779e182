#include "exec/IconAlert.h"

#include "exec/AppServices.h"
#include "exec/CommandJournal.h"
#include "exec/ProcessRunner.h"

std::optional<QString> IconAlert::ExecuteCmd(const QString &tool, const QStringList &args) {
    return ProcessRunner::output(tool, args);
}

std::optional<QString> IconAlert::ExecuteRootErrorCmd(const QString &command, const QString &arg) {
    // A dry run lists the command and takes it as done.
    if (m_services.dryRun()) {
        if (m_services.journal())
            m_services.journal()->recordPlanned(Command{command, {arg}, true});
        return QString();
    }
    return m_services.rootScript().run(command, arg);
}

void IconAlert::ShowErrorMsg(const QString &message, QObject *window) {
    m_services.alerts().showError(message, window);
}

void IconAlert::ShowInfoMsg(const QString &message, QObject *window) {
    m_services.alerts().showInfo(message, window);
}

bool IconAlert::isRoot(const QString &path) {
    return m_services.isStartedSystem(path);
}

#include "exec/IconAlert.h"

#include "exec/AdminAuthentication.h"
#include "exec/ProcessRunner.h"
#include "volumes/DiskInfo.h"

#include <memory>

namespace {
std::unique_ptr<IconAlert> &sharedSlot() {
    static std::unique_ptr<IconAlert> instance;
    return instance;
}
} // namespace

IconAlert::IconAlert(const SystemPaths &paths, AdminAuthentication &session, Alerts alerts)
    : m_paths(paths), m_alerts(alerts), m_rootScript(session, paths.home()),
      m_index(paths.contentsDir() + QStringLiteral("/CustomKextDirs.plist")) {}

IconAlert &IconAlert::defaultinst() {
    auto &slot = sharedSlot();
    if (!slot)
        slot = std::make_unique<IconAlert>(SystemPaths::current(),
                                           AdminAuthentication::sharedInstance(),
                                           Alerts(nullptr, nullptr));
    return *slot;
}

void IconAlert::configureDefault(const SystemPaths &paths, AdminAuthentication &session,
                                 Alerts alerts) {
    sharedSlot() = std::make_unique<IconAlert>(paths, session, alerts);
}

std::optional<QString> IconAlert::ExecuteCmd(const QString &tool, const QStringList &args) {
    return ProcessRunner::output(tool, args);
}

std::optional<QString> IconAlert::ExecuteErrorCmd(const QString &tool, const QStringList &args) {
    return ProcessRunner::errorOutput(tool, args);
}

std::optional<QString> IconAlert::ExecuteRootErrorCmd(const QString &command, const QString &arg) {
    return m_rootScript.run(command, arg);
}

void IconAlert::ShowErrorMsg(const QString &message, QObject *window) {
    m_alerts.showError(message, window);
}

void IconAlert::ShowInfoMsg(const QString &message, QObject *window) {
    m_alerts.showInfo(message, window);
}

bool IconAlert::isRoot(const QString &path) {
    const std::optional<QString> info = ExecuteCmd(
        m_paths.system(QStringLiteral("/usr/sbin/diskutil")), {QStringLiteral("info"), path});
    return diskInfoIsStartedSystem(info.value_or(QString()));
}

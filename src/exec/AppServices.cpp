#include "exec/AppServices.h"

#include "exec/CommandJournal.h"
#include "exec/DryRunExecutor.h"
#include "exec/ProcessRunner.h"
#include "exec/SessionExecutor.h"
#include "volumes/DiskInfo.h"

AppServices::AppServices(const SystemPaths &paths, AdminAuthentication &session, Alerts alerts)
    : m_paths(paths), m_session(session), m_alerts(alerts), m_rootScript(session, paths.home()),
      m_index(paths.contentsDir() + QStringLiteral("/CustomKextDirs.plist")),
      m_executors([&session] { return std::make_shared<SessionExecutor>(session); }),
      m_startedSystem(
          [diskutil = paths.system(QStringLiteral("/usr/sbin/diskutil"))](const QString &path) {
              const std::optional<QString> info =
                  ProcessRunner::output(diskutil, {QStringLiteral("info"), path});
              return diskInfoIsStartedSystem(info.value_or(QString()));
          }) {}

void AppServices::planOnly(CommandJournal &journal) {
    m_journal = &journal;
    m_dryRun = true;
    auto planned = std::make_shared<DryRunExecutor>(
        [&journal](const Command &command) { journal.recordPlanned(command); });
    m_executors = [planned] { return planned; };
}

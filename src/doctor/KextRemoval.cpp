#include "doctor/KextRemoval.h"

#include "exec/Executor.h"
#include "exec/FailedCommands.h"
#include "install/KextBackup.h"

#include <QFileInfo>

KextRemoval::KextRemoval(const SystemPaths &paths, Executor &executor, const QString &volume,
                         const QString &extraVersion, const QDateTime &when)
    : m_paths(paths), m_executor(executor), m_volume(volume), m_extraVersion(extraVersion),
      m_when(when) {}

QString KextRemoval::remove(const QString &kextPath) {
    const QString root = m_paths.volumeRoot(m_volume) + QLatin1Char('/');
    const QString folder = QFileInfo(kextPath).path();
    const QString removedFrom = folder.startsWith(root) ? folder.mid(root.size()) : folder;
    // A dry run changes nothing, the user's desktop included.
    if (!m_executor.simulated()) {
        // One backup folder per copy: its manifest names where that copy goes back to.
        BackupManifest manifest;
        manifest.date = m_when;
        manifest.volume = m_volume;
        manifest.extraVersion = m_extraVersion;
        manifest.destination = removedFrom.startsWith(QLatin1String("System/"))
                                   ? QStringLiteral("sle")
                                   : QStringLiteral("extra");
        KextBackup backup(m_paths.desktop(), m_when, manifest);
        const KextBackup::Saved saved = backup.save(kextPath, removedFrom);
        if (saved.copy.isEmpty())
            return QStringLiteral("%1 was left in place: its backup in %2 could not be "
                                  "completed (%3).")
                .arg(kextPath, backup.runFolder(), saved.error);
    }
    const Command rm{m_paths.system(QStringLiteral("/bin/rm")), {QStringLiteral("-Rf"), kextPath}};
    const CommandResult result = m_executor.run(rm);
    return result.ok() ? QString() : FailedCommands::describe(rm, result);
}

#pragma once

#include "exec/Alerts.h"
#include "exec/RootScript.h"
#include "volumes/KextLocationIndex.h"
#include "volumes/SystemPaths.h"

#include <QString>
#include <QStringList>
#include <optional>

class AdminAuthentication;
class QObject;

// The program's shared utility object: runs tools as the user or one root command line,
// reports the end of tasks, and tells whether a volume is the started system. A thin
// facade over the focused parts in this folder.
class IconAlert {
public:
    IconAlert(const SystemPaths &paths, AdminAuthentication &session, Alerts alerts);

    static IconAlert &defaultinst();
    // Main replaces the shared object once the paths and seams are known.
    static void configureDefault(const SystemPaths &paths, AdminAuthentication &session,
                                 Alerts alerts);

    std::optional<QString> ExecuteCmd(const QString &tool, const QStringList &args);
    std::optional<QString> ExecuteErrorCmd(const QString &tool, const QStringList &args);
    std::optional<QString> ExecuteRootErrorCmd(const QString &command, const QString &arg);

    void ShowErrorMsg(const QString &message, QObject *window);
    void ShowInfoMsg(const QString &message, QObject *window);

    // Whether the path is the mount point of the started system (diskutil info).
    bool isRoot(const QString &path);

    const SystemPaths &paths() const { return m_paths; }
    Alerts &alerts() { return m_alerts; }
    // The one kext location index of the program.
    KextLocationIndex &index() { return m_index; }

private:
    SystemPaths m_paths;
    Alerts m_alerts;
    RootScript m_rootScript;
    KextLocationIndex m_index;
};

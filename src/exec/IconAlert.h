#pragma once

#include <QString>
#include <QStringList>
#include <optional>

class AppServices;
class QObject;

// The program's shared utility object, under the names its callers know: runs tools as
// the user or one root command line, reports the end of tasks, tells whether a volume is
// the started system and holds the kext location index. A thin facade over the program's
// services; it holds nothing of its own.
class IconAlert {
public:
    explicit IconAlert(AppServices &services) : m_services(services) {}

    std::optional<QString> ExecuteCmd(const QString &tool, const QStringList &args);
    std::optional<QString> ExecuteRootErrorCmd(const QString &command, const QString &arg);

    void ShowErrorMsg(const QString &message, QObject *window);
    void ShowInfoMsg(const QString &message, QObject *window);

    // Whether the path is the mount point of the started system.
    bool isRoot(const QString &path);

private:
    AppServices &m_services;
};

#pragma once

#include "sandbox/StandInResult.h"

#include <QStringList>
#include <optional>

// diskutil, system_profiler and file of the sandbox, in the layouts of Mac OS X 10.6.
class SystemToolsStandIn {
public:
    explicit SystemToolsStandIn(const QString &root);

    StandInResult diskutil(const QStringList &args) const;
    StandInResult systemProfiler(const QStringList &args) const;
    StandInResult file(const QStringList &args) const;

private:
    struct Volume {
        QString name;
        QString mountPoint; // as the Mac sees it: "/" or "/Volumes/NAME"
        QString device;     // "disk0s2"
    };
    // The volume whose mount point `path` is; absent for any other path.
    std::optional<Volume> volumeAt(const QString &path) const;
    QString diskInfo(const Volume &volume) const;
    QString systemVersion() const;

    QString m_root;
};

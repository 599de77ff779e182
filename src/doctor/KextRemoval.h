#pragma once

#include "volumes/SystemPaths.h"

#include <QDateTime>
#include <QString>

class Executor;

// Takes a kext out of its folder the way an installation replaces one: first a verified
// copy, with its manifest, in a dated folder of Kext Backups on the desktop, made as the
// user; then "rm -Rf" as root, only when that copy is whole, so the kext can always be
// put back from there.
class KextRemoval {
public:
    KextRemoval(const SystemPaths &paths, Executor &executor, const QString &volume,
                const QString &extraVersion, const QDateTime &when);

    // "" when removed; otherwise why not, and the kext stays.
    QString remove(const QString &kextPath);

private:
    SystemPaths m_paths;
    Executor &m_executor;
    QString m_volume;
    QString m_extraVersion;
    QDateTime m_when;
};

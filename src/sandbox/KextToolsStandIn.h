#pragma once

#include "sandbox/LoadedKextState.h"
#include "sandbox/StandInResult.h"

#include <QStringList>

// kextstat, kextload, kextunload and kextlibs of the sandbox: they share the loaded-kext
// state file below the root and answer with the texts and error lines of Apple's tools.
class KextToolsStandIn {
public:
    explicit KextToolsStandIn(const QString &root);

    StandInResult kextstat(const QStringList &args) const;
    StandInResult kextload(const QStringList &args) const;
    StandInResult kextunload(const QStringList &args) const;
    StandInResult kextlibs(const QStringList &args) const;

private:
    QString systemExtensions() const;
    // Loads `path` and, first, the libraries it needs from S/L/E. Empty on success,
    // otherwise the kernel's reason.
    QString loadWithLibraries(QList<LoadedKext> &kexts, const QString &path, int depth) const;

    QString m_root;
    LoadedKextState m_state;
};

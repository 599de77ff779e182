#pragma once

#include "sandbox/StandInResult.h"

#include <QStringList>

// kextcache and mkextunpack of the sandbox. The archives are real: they are written and
// read by our own mkext code, reached through the `mkext` verbs of our binary.
class MkextToolsStandIn {
public:
    MkextToolsStandIn(const QString &root, const QString &binary);

    StandInResult kextcache(const QStringList &args) const;
    StandInResult mkextunpack(const QStringList &args) const;

private:
    // Runs our binary with `args`, capturing standard error; standard output is ours.
    StandInResult runBinary(const QStringList &args, bool captureOutput) const;

    QString m_root;
    QString m_binary;
};

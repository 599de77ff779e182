#pragma once

#include "sandbox/StandInResult.h"

#include <QStringList>

// The stand-in tools whose behaviour lives in our binary (the shell stand-ins hand over
// to it through `kextkeeper --root DIR sandbox tool NAME ARGS...`).
class SandboxTools {
public:
    SandboxTools(const QString &root, const QString &binary);

    // Their system paths, as a Mac has them.
    static QStringList paths();
    static bool has(const QString &name);
    StandInResult run(const QString &name, const QStringList &args) const;

private:
    QString m_root;
    QString m_binary;
};

#pragma once

#include "exec/Command.h"

#include <QList>

class SystemPaths;

// The pair every task runs as root on a kext folder it changed, giving it the owner and
// modes the kernel insists on:
//   chown -R 0:0 FOLDER
//   chmod -R 755 FOLDER
// (Next to the mkext rebuild rather than in volumes/, which must not know commands.)
QList<Command> ownershipRepairCommands(const SystemPaths &paths, const QString &folder);

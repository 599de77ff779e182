#pragma once

#include "exec/Command.h"

class SystemPaths;

// The one command line that rebuilds an mkext archive from a kext folder, shared by
// maintenance, installation and the Extra folder operations:
//   kextcache -v 1 -a i386 -a x86_64 -m MKEXT FOLDER   (as root)
// Where the system has no kextcache (newer macOS, any other host) our own binary's
// "mkext build" verb writes the same archive from the same folder.
Command mkextRebuildCommand(const SystemPaths &paths, const QString &mkextPath,
                            const QString &sourceFolder);

// Whether mkextRebuildCommand falls back to our own builder on these paths.
bool mkextRebuildUsesBuiltin(const SystemPaths &paths);

// Our own executable, as the fallback runs it (settable for tests).
QString kextkeeperExecutable();
void setKextkeeperExecutable(const QString &path);

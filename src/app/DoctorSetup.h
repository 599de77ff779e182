#pragma once

#include "doctor/KextDoctor.h"
#include "volumes/SystemPaths.h"

// How the window and the command line point the doctor at a volume of this run's system.
class DoctorSetup {
public:
    // On a sandbox, where files can't belong to root, the owners come from the sandbox's
    // record of them; everywhere else from the files.
    static KextDoctor::Options options(const SystemPaths &paths, const QString &volume,
                                       const QString &extraVersion);
};

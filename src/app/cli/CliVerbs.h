#pragma once

#include "cli/CliContext.h"

// The command-line verbs, one function each, defined in the files named after them and
// listed with their help text in CliRegistry.cpp.
int checkVerb(CliContext &c);    // CheckVerb.cpp
int doctorVerb(CliContext &c);   // DoctorVerb.cpp
int loadVerb(CliContext &c);     // CheckVerb.cpp
int extraVerb(CliContext &c);    // ExtraVerb.cpp
int installVerb(CliContext &c);  // InstallVerb.cpp
int journalVerb(CliContext &c);  // JournalVerb.cpp
int loadedVerb(CliContext &c);   // LoadedVerb.cpp
int unloadVerb(CliContext &c);   // LoadedVerb.cpp
int reloadVerb(CliContext &c);   // LoadedVerb.cpp
int reportVerb(CliContext &c);   // LoadedVerb.cpp
int restoreVerb(CliContext &c);  // RestoreVerb.cpp
int maintainVerb(CliContext &c); // MaintainVerb.cpp
int mkextVerb(CliContext &c);    // MkextVerb.cpp
int sandboxVerb(CliContext &c);  // SandboxVerb.cpp
int volumesVerb(CliContext &c);  // VolumesVerb.cpp

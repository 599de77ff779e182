#pragma once

// Parses the global options, sets up the shared objects, then runs a verb or opens
// the window.
int kextkeeperMain(int argc, char **argv);

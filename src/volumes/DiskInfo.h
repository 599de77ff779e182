#pragma once

#include <QString>

// Reads `diskutil info` output: the first "Mount Point:" line decides, its value taken
// from column 29 exactly as the tool aligns it, without trimming. A short line, an
// empty output or one without the label is not the started system.
bool diskInfoIsStartedSystem(const QString &diskutilOutput);

#pragma once

#include "volumes/SystemPaths.h"

#include <QString>
#include <optional>

// Section 3 of the system report: the kexts in the started system's Extra folder, each
// with the names of its plug-ins. The plug-ins column starts at the longest name's
// length + 4 on every row.
namespace ExtraKextTable {

// "3. /Extra Kexts:\n" and the table. Absent when both Extra/Extensions and
// Extra/KextStore are present: the report can't tell which one the boot loader uses.
std::optional<QString> section(const SystemPaths &paths);

// The error shown when a report is abandoned for that reason.
QString bothFoldersMessage();

} // namespace ExtraKextTable

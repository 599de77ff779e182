#pragma once

#include <QString>

// The parts of the system report taken from the system profiler's two overviews. Both
// overviews are cut at fixed positions, as the report has always done: 41 characters of
// software heading ("Software:", a blank line, "    System Software Overview:" and their
// newlines) and 34 of hardware heading. A shorter text gives empty pieces, never a crash.
namespace ReportOverview {

// The default file name: the computer's name from the software overview (its sixth line
// after the heading, less the 21 characters of "      Computer Name: ").
QString defaultFileName(const QString &softwareOverview);

// Sections 1 and 2: "1. Software Info:" with the software lines except the user's name
// and the time since start-up, then "2. Hardware Info:" with the hardware text; every
// run of six blanks (the tools' indentation) removed from both.
QString sections(const QString &softwareOverview, const QString &hardwareOverview);

} // namespace ReportOverview

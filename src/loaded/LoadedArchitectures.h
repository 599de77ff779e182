#pragma once

#include <QString>

// What the file-type tool's description of a kext's executable says about its code, as
// the loaded kexts page and the report need it. The page asks the same two markers as
// the check page (a universal file's per-architecture line, or a thin file's words); the
// report only looks for the bare architecture names.
struct LoadedArchitectures {
    bool x86_64 = false;
    bool i386 = false;

    static LoadedArchitectures fromProbe(const QString &probeText);

    // The report's fixed-width cell: "x86_64 " or 7 blanks, "i386 " or 5 blanks, "ppc "
    // or 5 blanks. The missing-ppc filler is one blank wider than "ppc ", as the report
    // has always been laid out; "ppc" also matches ppc64.
    static QString reportCell(const QString &probeText);
};

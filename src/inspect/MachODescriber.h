#pragma once

#include <QByteArray>
#include <QString>

// Describes an executable the way Apple's file tool of Mac OS X 10.6 and 10.7 does with
// "-b": "Mach-O object i386", "Mach-O 64-bit kext bundle x86_64", or for a universal file
// "Mach-O universal binary with 2 architectures" followed by one
// "<path> (for architecture x86_64):<TAB><description>" line per slice. We read the
// header ourselves because the file tool of other systems (and of newer macOS) words
// its answers differently, while the architecture checks search for those exact words;
// reading a header in-process is also far faster than starting a tool per kext.
class MachODescriber {
public:
    // The description of the file at path, ending in a line feed like the tool's output;
    // "" for a file that is missing, unreadable or not Mach-O.
    static QString describe(const QString &path);
    // The same for bytes already read; path is only printed on universal slice lines.
    static QString describeBytes(const QByteArray &bytes, const QString &path);

    // The name of a processor as the universal lines print it ("x86_64", "ppc7400").
    static QString architectureName(uint32_t cputype, uint32_t cpusubtype);
};

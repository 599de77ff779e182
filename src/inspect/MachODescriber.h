#pragma once

#include <QString>
#include <QStringList>
#include <cstdint>

// Describes a file the way Apple's file tool of Mac OS X 10.6 and 10.7 does with "-b":
// "Mach-O object i386", "Mach-O 64-bit kext bundle x86_64", or for a universal file
// "Mach-O universal binary with 2 architectures" followed by one
// "<path> (for architecture x86_64):<TAB><description>" line per slice; and what is not
// Mach-O in that tool's words too ("cannot open `PATH' (No such file or directory)",
// "empty", "data", "directory", "fifo (named pipe)"), because the architecture checks
// search the whole text, path included. We read the headers ourselves because the file
// tool of other systems (and of newer macOS) words its answers differently; reading a
// header in-process is also far faster than starting a tool per kext.
class MachODescriber {
public:
    // The description of the file at path, ending in a line feed like the tool's output.
    // Only the first page and the header of each universal slice are read; a named pipe or
    // a device is never opened.
    static QString describe(const QString &path);

    // The processors a regular file has code for, each once in the order of its header(s):
    // the last words of the Mach-O lines describe() gives. Reads the same bytes without
    // looking the path up twice, for a caller that already knows the file is a plain one;
    // empty when it is not Mach-O or not a regular file.
    static QStringList processors(const QString &path);

    // The name of a processor as the universal lines print it ("x86_64", "ppc7400").
    static QString architectureName(uint32_t cputype, uint32_t cpusubtype);
};

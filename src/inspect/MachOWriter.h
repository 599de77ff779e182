#pragma once

#include "mkext/MachOSlices.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <cstdint>

// Builds small but well-formed Mach-O files: a header with no load commands, thin or
// wrapped in a universal (fat) container. The tests and the sandbox use them as kext
// executables, so the architecture probe has real headers to read.
class MachOWriter {
public:
    using enum MachOSlices::CpuType;
    enum FileType : uint32_t {
        Object = 1,
        Executable = 2,
        Dylib = 6,
        Bundle = 8,
        KextBundle = 11,
    };

    struct Slice {
        uint32_t cputype;
        uint32_t filetype;
        // The processor's "all" subtype when left at -1.
        int64_t cpusubtype = -1;
    };

    // A thin file in the byte order of its processor (big-endian for ppc), with the
    // 64-bit magic when the processor's 64-bit flag is set.
    static QByteArray thin(const Slice &slice);
    // A universal file holding the slices in this order, each aligned to 4096 bytes.
    static QByteArray fat(const QList<Slice> &slices);

    // Writes the bytes, creating missing parent folders; false when it cannot.
    static bool write(const QString &path, const QByteArray &bytes);

    // The usual kext executable of each processor: a relocatable object for the 32-bit
    // ones, a kext bundle for x86_64.
    static Slice kextSlice(uint32_t cputype);
};

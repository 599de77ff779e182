#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <cstdint>
#include <optional>

// What the archive code needs to know about Mach-O files: processor names, the
// universal (fat) container that wraps both archives and executables, and the code of
// one processor inside an executable.
class MachOSlices {
public:
    enum CpuType : uint32_t {
        I386 = 7,
        X86_64 = 0x01000007,
        PPC = 18,
        PPC64 = 0x01000012,
    };

    struct FatEntry {
        uint32_t cputype = 0;
        uint32_t cpusubtype = 0;
        uint32_t offset = 0;
        uint32_t size = 0;
    };

    // "x86_64", "i386", "ppc", "ppc64".
    static std::optional<uint32_t> cpuType(const QString &arch);
    static QString archName(uint32_t cputype);
    // The "all" subtype the tools write for a processor.
    static uint32_t subtypeAll(uint32_t cputype);
    // The processor this program runs on, the one a fat archive is read for by default;
    // x86_64 on processors no mkext archive ever held (arm64), as on an Intel Mac.
    static uint32_t hostCpuType();

    static bool isFat(const QByteArray &bytes);
    // The entries of a fat container, absent when the header lies about its count.
    // Entries may still point outside the file; callers clip them.
    static std::optional<QList<FatEntry>> fatEntries(const QByteArray &bytes);

    // The code for `cputype`: the whole file when it is a thin Mach-O of that processor,
    // its slice when it is universal; absent when there is none.
    static std::optional<QByteArray> code(const QByteArray &file, uint32_t cputype);

    // Wraps thin files in a fat container, each slice aligned to 2^alignPower bytes.
    static QByteArray fat(const QList<QPair<FatEntry, QByteArray>> &slices, int alignPower = 12);
    // The same container written piece by piece: where slices of the entries' sizes go,
    // and the header that lists them (the bytes up to the first slice not included).
    static QList<FatEntry> fatLayout(QList<FatEntry> entries, int alignPower = 12);
    static QByteArray fatHeader(const QList<FatEntry> &placed, int alignPower = 12);
};

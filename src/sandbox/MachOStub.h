#pragma once

#include <QByteArray>
#include <QList>

// Writes small but genuine Mach-O files for the sandbox's made-up kexts: a header with
// no load commands followed by a little padding, thin or wrapped in a fat header, so that
// every tool that looks at a kext's executable finds the architectures it would on a Mac.
class MachOStub {
public:
    enum class Cpu { I386, X86_64, Ppc, Ppc64 };
    // File types as the kernel headers number them.
    static constexpr quint32 object = 1;
    static constexpr quint32 kextBundle = 11;

    struct Slice {
        Cpu cpu;
        quint32 fileType;
    };

    static QByteArray thin(Cpu cpu, quint32 fileType);
    // Slices in the given order, each aligned to a 4096-byte boundary.
    static QByteArray fat(const QList<Slice> &slices);

    static quint32 cpuType(Cpu cpu);
};

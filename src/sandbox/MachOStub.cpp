#include "sandbox/MachOStub.h"

#include <QtEndian>

namespace {

constexpr quint32 abi64 = 0x01000000;
constexpr int sliceAlignment = 12; // 2^12
constexpr int bodySize = 256;

bool is64(MachOStub::Cpu cpu) {
    return cpu == MachOStub::Cpu::X86_64 || cpu == MachOStub::Cpu::Ppc64;
}

bool isBigEndian(MachOStub::Cpu cpu) {
    return cpu == MachOStub::Cpu::Ppc || cpu == MachOStub::Cpu::Ppc64;
}

void appendWord(QByteArray &bytes, quint32 value, bool bigEndian) {
    char word[4];
    if (bigEndian)
        qToBigEndian(value, word);
    else
        qToLittleEndian(value, word);
    bytes.append(word, 4);
}

quint32 cpuSubtype(MachOStub::Cpu cpu) {
    // The "all" subtypes: 3 for the Intel processors, 0 for PowerPC.
    return isBigEndian(cpu) ? 0 : 3;
}

} // namespace

quint32 MachOStub::cpuType(Cpu cpu) {
    switch (cpu) {
    case Cpu::I386:
        return 7;
    case Cpu::X86_64:
        return 7 | abi64;
    case Cpu::Ppc:
        return 18;
    case Cpu::Ppc64:
        return 18 | abi64;
    }
    return 0;
}

QByteArray MachOStub::thin(Cpu cpu, quint32 fileType) {
    const bool big = isBigEndian(cpu);
    QByteArray bytes;
    appendWord(bytes, is64(cpu) ? 0xfeedfacf : 0xfeedface, big);
    appendWord(bytes, cpuType(cpu), big);
    appendWord(bytes, cpuSubtype(cpu), big);
    appendWord(bytes, fileType, big);
    appendWord(bytes, 0, big); // no load commands
    appendWord(bytes, 0, big); // so no bytes of them
    appendWord(bytes, 0, big); // flags
    if (is64(cpu))
        appendWord(bytes, 0, big); // reserved
    bytes.append(QByteArray(bodySize, '\0'));
    return bytes;
}

QByteArray MachOStub::fat(const QList<Slice> &slices) {
    QByteArray header;
    appendWord(header, 0xcafebabe, true);
    appendWord(header, quint32(slices.size()), true);
    QByteArray body;
    const qsizetype align = qsizetype(1) << sliceAlignment;
    qsizetype offset = align;
    for (const Slice &slice : slices) {
        const QByteArray image = thin(slice.cpu, slice.fileType);
        appendWord(header, cpuType(slice.cpu), true);
        appendWord(header, cpuSubtype(slice.cpu), true);
        appendWord(header, quint32(offset), true);
        appendWord(header, quint32(image.size()), true);
        appendWord(header, sliceAlignment, true);
        body.append(QByteArray(offset - align - body.size(), '\0'));
        body.append(image);
        offset += (image.size() + align - 1) / align * align;
    }
    header.append(QByteArray(align - header.size(), '\0'));
    return header + body;
}

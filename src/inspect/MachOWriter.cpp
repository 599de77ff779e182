#include "inspect/MachOWriter.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <QtEndian>

namespace {
constexpr uint32_t abi64 = 0x01000000;

uint32_t subtype(const MachOWriter::Slice &slice) {
    return slice.cpusubtype < 0 ? MachOSlices::subtypeAll(slice.cputype)
                                : uint32_t(slice.cpusubtype);
}

bool bigEndianCpu(uint32_t cputype) {
    return (cputype & ~abi64) == MachOWriter::PPC;
}

void putWord(QByteArray &bytes, uint32_t value, bool bigEndian) {
    char buffer[4];
    if (bigEndian)
        qToBigEndian(value, buffer);
    else
        qToLittleEndian(value, buffer);
    bytes.append(buffer, 4);
}
} // namespace

QByteArray MachOWriter::thin(const Slice &slice) {
    const bool is64 = slice.cputype & abi64;
    const bool big = bigEndianCpu(slice.cputype);
    QByteArray bytes;
    putWord(bytes, is64 ? 0xfeedfacf : 0xfeedface, big);
    putWord(bytes, slice.cputype, big);
    putWord(bytes, subtype(slice), big);
    putWord(bytes, slice.filetype, big);
    putWord(bytes, 0, big); // number of load commands
    putWord(bytes, 0, big); // their size
    putWord(bytes, 0, big); // flags
    if (is64)
        putWord(bytes, 0, big); // reserved
    return bytes;
}

QByteArray MachOWriter::fat(const QList<Slice> &slices) {
    QList<QPair<MachOSlices::FatEntry, QByteArray>> entries;
    for (const Slice &slice : slices)
        entries.append({{slice.cputype, subtype(slice)}, thin(slice)});
    return MachOSlices::fat(entries);
}

bool MachOWriter::write(const QString &path, const QByteArray &bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(bytes);
    return file.commit();
}

MachOWriter::Slice MachOWriter::kextSlice(uint32_t cputype) {
    return {cputype, cputype == X86_64 ? KextBundle : Object};
}

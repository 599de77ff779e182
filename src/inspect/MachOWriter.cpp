#include "inspect/MachOWriter.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <QtEndian>

namespace {
constexpr uint32_t abi64 = 0x01000000;
constexpr uint32_t fatAlignment = 4096;

uint32_t allSubtype(uint32_t cputype) {
    // i386 and x86_64 call their generic subtype 3; the PowerPC ones use 0.
    return (cputype & ~abi64) == MachOWriter::I386 ? 3 : 0;
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
    const uint32_t subtype =
        slice.cpusubtype < 0 ? allSubtype(slice.cputype) : uint32_t(slice.cpusubtype);
    QByteArray bytes;
    putWord(bytes, is64 ? 0xfeedfacf : 0xfeedface, big);
    putWord(bytes, slice.cputype, big);
    putWord(bytes, subtype, big);
    putWord(bytes, slice.filetype, big);
    putWord(bytes, 0, big); // number of load commands
    putWord(bytes, 0, big); // their size
    putWord(bytes, 0, big); // flags
    if (is64)
        putWord(bytes, 0, big); // reserved
    return bytes;
}

QByteArray MachOWriter::fat(const QList<Slice> &slices) {
    QByteArray header;
    putWord(header, 0xcafebabe, true);
    putWord(header, uint32_t(slices.size()), true);
    QList<QByteArray> bodies;
    uint32_t offset = fatAlignment;
    for (const Slice &slice : slices) {
        const QByteArray body = thin(slice);
        putWord(header, slice.cputype, true);
        putWord(header,
                slice.cpusubtype < 0 ? allSubtype(slice.cputype) : uint32_t(slice.cpusubtype),
                true);
        putWord(header, offset, true);
        putWord(header, uint32_t(body.size()), true);
        putWord(header, 12, true); // 2^12 = 4096
        bodies << body;
        offset += fatAlignment;
    }
    QByteArray bytes = header;
    for (const QByteArray &body : bodies) {
        bytes.resize((bytes.size() + fatAlignment - 1) / fatAlignment * fatAlignment, '\0');
        bytes.append(body);
    }
    return bytes;
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

#pragma once

#include <QByteArray>
#include <QtEndian>
#include <cstdint>

// Layout facts of the archive: every integer is big-endian, whatever the processor the
// archive is meant for.
namespace MkextFormat {

constexpr uint32_t Magic = 0x4D4B5854;     // "MKXT"
constexpr uint32_t Signature = 0x4D4F5358; // "MOSX"
constexpr uint32_t Version1 = 0x01008000;
constexpr uint32_t Version2 = 0x02002001;
constexpr uint32_t FatMagic = 0xcafebabe;

// magic, signature, length, checksum, version, kext count, cputype, cpusubtype
constexpr qsizetype CoreHeaderSize = 32;
// ... then plist offset, compressed size and full size
constexpr qsizetype Version2HeaderSize = 44;
// Per kext in version 1: {offset, compressed size, full size, time} for plist and code.
constexpr qsizetype Version1KextRecordSize = 32;
constexpr qsizetype FileEntryHeaderSize = 8;
constexpr qsizetype FatHeaderSize = 8;
constexpr qsizetype FatArchSize = 20;
// The checksum covers everything after the checksum field itself.
constexpr qsizetype ChecksumStart = 16;

constexpr uint32_t CpuTypeAny = 0xffffffff;

inline const char *InfoDictionariesKey = "_MKEXTInfoDictionaries";
inline const char *BundlePathKey = "_MKEXTBundlePath";
inline const char *ExecutableKey = "_MKEXTExecutable";
inline const char *ExecutableRelativePathKey = "_MKEXTExecutableRelativePath";

// Reads a big-endian word; the caller has checked the bounds.
inline uint32_t word(const QByteArray &bytes, qsizetype offset) {
    return qFromBigEndian<quint32>(bytes.constData() + offset);
}

inline void appendWord(QByteArray &bytes, uint32_t value) {
    char buffer[4];
    qToBigEndian<quint32>(value, buffer);
    bytes.append(buffer, 4);
}

inline void setWord(QByteArray &bytes, qsizetype offset, uint32_t value) {
    qToBigEndian<quint32>(value, bytes.data() + offset);
}

} // namespace MkextFormat

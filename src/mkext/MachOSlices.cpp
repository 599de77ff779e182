#include "mkext/MachOSlices.h"

#include "mkext/MkextFormat.h"

#include <QtEndian>

namespace {
constexpr uint32_t Magic32 = 0xfeedface;
constexpr uint32_t Magic64 = 0xfeedfacf;
constexpr uint32_t Cigam32 = 0xcefaedfe;
constexpr uint32_t Cigam64 = 0xcffaedfe;
} // namespace

std::optional<uint32_t> MachOSlices::cpuType(const QString &arch) {
    if (arch == QLatin1String("x86_64"))
        return X86_64;
    if (arch == QLatin1String("i386"))
        return I386;
    if (arch == QLatin1String("ppc"))
        return PPC;
    if (arch == QLatin1String("ppc64"))
        return PPC64;
    return std::nullopt;
}

QString MachOSlices::archName(uint32_t cputype) {
    switch (cputype) {
    case X86_64:
        return QStringLiteral("x86_64");
    case I386:
        return QStringLiteral("i386");
    case PPC:
        return QStringLiteral("ppc");
    case PPC64:
        return QStringLiteral("ppc64");
    default:
        return QStringLiteral("cputype %1").arg(cputype);
    }
}

uint32_t MachOSlices::subtypeAll(uint32_t cputype) {
    // Intel's "all" subtype is 3, PowerPC's 0.
    return (cputype & 0xffffff) == I386 ? 3 : 0;
}

uint32_t MachOSlices::hostCpuType() {
#if defined(__i386__)
    return I386;
#elif defined(__ppc64__)
    return PPC64;
#elif defined(__ppc__)
    return PPC;
#else
    return X86_64;
#endif
}

bool MachOSlices::isFat(const QByteArray &bytes) {
    return bytes.size() >= 4 && MkextFormat::word(bytes, 0) == MkextFormat::FatMagic;
}

std::optional<QList<MachOSlices::FatEntry>> MachOSlices::fatEntries(const QByteArray &bytes) {
    using namespace MkextFormat;
    if (!isFat(bytes) || bytes.size() < FatHeaderSize)
        return std::nullopt;
    const uint32_t count = word(bytes, 4);
    if (count == 0 || count > uint32_t((bytes.size() - FatHeaderSize) / FatArchSize))
        return std::nullopt;
    QList<FatEntry> entries;
    for (uint32_t i = 0; i < count; ++i) {
        const qsizetype at = FatHeaderSize + qsizetype(i) * FatArchSize;
        entries.append(
            {word(bytes, at), word(bytes, at + 4), word(bytes, at + 8), word(bytes, at + 12)});
    }
    return entries;
}

std::optional<QByteArray> MachOSlices::code(const QByteArray &file, uint32_t cputype) {
    if (file.size() < 8)
        return std::nullopt;
    const uint32_t magic = MkextFormat::word(file, 0);
    if (magic == Magic32 || magic == Magic64)
        return MkextFormat::word(file, 4) == cputype ? std::optional(file) : std::nullopt;
    if (magic == Cigam32 || magic == Cigam64)
        return qFromLittleEndian<quint32>(file.constData() + 4) == cputype ? std::optional(file)
                                                                           : std::nullopt;
    const auto entries = fatEntries(file);
    if (!entries)
        return std::nullopt;
    for (const FatEntry &entry : *entries) {
        if (entry.cputype != cputype)
            continue;
        if (quint64(entry.offset) + entry.size > quint64(file.size()))
            return std::nullopt;
        return file.mid(entry.offset, entry.size);
    }
    return std::nullopt;
}

QList<MachOSlices::FatEntry> MachOSlices::fatLayout(QList<FatEntry> entries, int alignPower) {
    const qsizetype align = qsizetype(1) << alignPower;
    auto aligned = [align](qsizetype at) { return (at + align - 1) / align * align; };
    qsizetype at = aligned(MkextFormat::FatHeaderSize + MkextFormat::FatArchSize * entries.size());
    for (FatEntry &entry : entries) {
        entry.offset = uint32_t(at);
        at = aligned(at + entry.size);
    }
    return entries;
}

QByteArray MachOSlices::fatHeader(const QList<FatEntry> &placed, int alignPower) {
    using namespace MkextFormat;
    QByteArray out;
    appendWord(out, FatMagic);
    appendWord(out, uint32_t(placed.size()));
    for (const FatEntry &entry : placed) {
        appendWord(out, entry.cputype);
        appendWord(out, entry.cpusubtype);
        appendWord(out, entry.offset);
        appendWord(out, entry.size);
        appendWord(out, uint32_t(alignPower));
    }
    return out;
}

QByteArray MachOSlices::fat(const QList<QPair<FatEntry, QByteArray>> &slices, int alignPower) {
    QList<FatEntry> entries;
    for (const auto &[entry, bytes] : slices) {
        entries << entry;
        entries.last().size = uint32_t(bytes.size());
    }
    entries = fatLayout(entries, alignPower);
    QByteArray out = fatHeader(entries, alignPower);
    for (qsizetype i = 0; i < slices.size(); ++i) {
        out.append(qsizetype(entries[i].offset) - out.size(), '\0');
        out.append(slices[i].second);
    }
    return out;
}

#include "inspect/MachODescriber.h"

#include <QFile>
#include <QStringList>
#include <QtEndian>
#include <optional>

namespace {
constexpr uint32_t abi64 = 0x01000000;
constexpr uint32_t thinMagic = 0xfeedface;
constexpr uint32_t thin64Magic = 0xfeedfacf;
constexpr uint32_t fatMagic = 0xcafebabe;
constexpr int fatEntrySize = 20;
// Java class files share the universal magic; their version number there is at least
// 45, so like the file tool we take only small counts for a universal header.
constexpr uint32_t maxFatSlices = 20;
// Enough for any header we look at; executables can be large.
constexpr qint64 readLimit = 16 * 1024 * 1024;

std::optional<uint32_t> word(const QByteArray &bytes, qint64 offset, bool bigEndian) {
    if (offset < 0 || offset + 4 > bytes.size())
        return std::nullopt;
    const char *at = bytes.constData() + offset;
    return bigEndian ? qFromBigEndian<uint32_t>(at) : qFromLittleEndian<uint32_t>(at);
}

QString fileTypeWord(uint32_t filetype) {
    switch (filetype) {
    case 1:
        return QStringLiteral("object");
    case 2:
        return QStringLiteral("executable");
    case 3:
        return QStringLiteral("fixed virtual memory shared library");
    case 4:
        return QStringLiteral("core");
    case 5:
        return QStringLiteral("preload executable");
    case 6:
        return QStringLiteral("dynamically linked shared library");
    case 7:
        return QStringLiteral("dynamic linker");
    case 8:
        return QStringLiteral("bundle");
    case 9:
        return QStringLiteral("dynamically linked shared library stub");
    case 10:
        return QStringLiteral("dSYM companion file");
    case 11:
        return QStringLiteral("kext bundle");
    default:
        return QStringLiteral("filetype=%1").arg(filetype);
    }
}

QString processorWord(uint32_t cputype) {
    switch (cputype) {
    case 7:
        return QStringLiteral("i386");
    case 18:
        return QStringLiteral("ppc");
    case 12:
        return QStringLiteral("arm");
    case 7 | abi64:
        return QStringLiteral("x86_64");
    case 18 | abi64:
        return QStringLiteral("ppc64");
    default:
        return QStringLiteral("architecture=%1").arg(cputype);
    }
}

// One thin header at offset; nullopt when the bytes there are not one.
std::optional<QString> describeThin(const QByteArray &bytes, qint64 offset) {
    const std::optional<uint32_t> little = word(bytes, offset, false);
    if (!little)
        return std::nullopt;
    bool bigEndian;
    if ((*little & ~1u) == thinMagic)
        bigEndian = false;
    else if ((qbswap(*little) & ~1u) == thinMagic)
        bigEndian = true;
    else
        return std::nullopt;
    const uint32_t magic = bigEndian ? qbswap(*little) : *little;
    const std::optional<uint32_t> cputype = word(bytes, offset + 4, bigEndian);
    const std::optional<uint32_t> filetype = word(bytes, offset + 12, bigEndian);
    if (!cputype || !filetype)
        return std::nullopt;
    QString text = QStringLiteral("Mach-O");
    if (magic == thin64Magic)
        text += QStringLiteral(" 64-bit");
    return text + ' ' + fileTypeWord(*filetype) + ' ' + processorWord(*cputype);
}

std::optional<QString> describeFat(const QByteArray &bytes, const QString &path) {
    const std::optional<uint32_t> magic = word(bytes, 0, true);
    const std::optional<uint32_t> count = word(bytes, 4, true);
    if (!magic || *magic != fatMagic || !count || *count == 0 || *count >= maxFatSlices)
        return std::nullopt;
    if (8 + qint64(*count) * fatEntrySize > bytes.size())
        return std::nullopt;
    QStringList lines;
    lines << (*count == 1
                  ? QStringLiteral("Mach-O universal binary with 1 architecture")
                  : QStringLiteral("Mach-O universal binary with %1 architectures").arg(*count));
    for (uint32_t i = 0; i < *count; ++i) {
        const qint64 entry = 8 + qint64(i) * fatEntrySize;
        const uint32_t cputype = *word(bytes, entry, true);
        const uint32_t subtype = *word(bytes, entry + 4, true);
        const uint32_t offset = *word(bytes, entry + 8, true);
        // A slice that holds no Mach-O header (or lies past the end) is plain data.
        const QString slice = describeThin(bytes, offset).value_or(QStringLiteral("data"));
        lines << path + QStringLiteral(" (for architecture ") +
                     MachODescriber::architectureName(cputype, subtype) + QStringLiteral("):\t") +
                     slice;
    }
    return lines.join('\n');
}
} // namespace

QString MachODescriber::describe(const QString &path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    return describeBytes(file.read(readLimit), path);
}

QString MachODescriber::describeBytes(const QByteArray &bytes, const QString &path) {
    std::optional<QString> text = describeThin(bytes, 0);
    if (!text)
        text = describeFat(bytes, path);
    return text ? *text + '\n' : QString();
}

QString MachODescriber::architectureName(uint32_t cputype, uint32_t cpusubtype) {
    // The capability bits in the top byte do not change the name.
    const uint32_t subtype = cpusubtype & 0x00ffffff;
    switch (cputype) {
    case 7:
        switch (subtype) {
        case 4:
            return QStringLiteral("i486");
        case 0x84:
            return QStringLiteral("i486SX");
        case 5:
            return QStringLiteral("pentium");
        case 0x16:
            return QStringLiteral("pentpro");
        case 0x36:
            return QStringLiteral("pentIIm3");
        case 0x56:
            return QStringLiteral("pentIIm5");
        case 0x67:
            return QStringLiteral("pentium4");
        default:
            return QStringLiteral("i386");
        }
    case 7 | abi64:
        return subtype == 8 ? QStringLiteral("x86_64h") : QStringLiteral("x86_64");
    case 18:
        switch (subtype) {
        case 1:
            return QStringLiteral("ppc601");
        case 3:
            return QStringLiteral("ppc603");
        case 4:
            return QStringLiteral("ppc603e");
        case 5:
            return QStringLiteral("ppc603ev");
        case 6:
            return QStringLiteral("ppc604");
        case 7:
            return QStringLiteral("ppc604e");
        case 9:
            return QStringLiteral("ppc750");
        case 10:
            return QStringLiteral("ppc7400");
        case 11:
            return QStringLiteral("ppc7450");
        case 100:
            return QStringLiteral("ppc970");
        default:
            return QStringLiteral("ppc");
        }
    case 18 | abi64:
        return subtype == 100 ? QStringLiteral("ppc970-64") : QStringLiteral("ppc64");
    case 12:
        return QStringLiteral("arm");
    default:
        return QStringLiteral("cputype (%1) cpusubtype (%2)").arg(cputype).arg(subtype);
    }
}

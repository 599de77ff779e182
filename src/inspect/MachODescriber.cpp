#include "inspect/MachODescriber.h"

#include <QFile>
#include <QScopeGuard>
#include <QStringList>
#include <QtEndian>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr uint32_t abi64 = 0x01000000;
constexpr uint32_t thinMagic = 0xfeedface;
constexpr uint32_t thin64Magic = 0xfeedfacf;
constexpr uint32_t fatMagic = 0xcafebabe;
constexpr int fatEntrySize = 20;
// Java class files share the universal magic; their version number there is at least
// 45, so like the file tool we take only small counts for a universal header.
constexpr uint32_t maxFatSlices = 20;
// The universal table of at most maxFatSlices entries and a thin header both fit here.
constexpr qint64 firstPage = 4096;
// Magic, processor, processor subtype, file type: all a thin description needs.
constexpr qint64 thinHeaderSize = 16;
// Slices whose headers lie within this span of each other are read together.
constexpr qint64 maxSpan = 64 * 1024;

// Up to length bytes of an open file from offset; fewer at its end or on a failed read,
// whose error is left in error.
QByteArray readAt(int fd, qint64 offset, qint64 length, int &error) {
    QByteArray bytes(length, Qt::Uninitialized);
    qint64 done = 0;
    while (done < length) {
        const ssize_t n =
            ::pread(fd, bytes.data() + done, size_t(length - done), off_t(offset + done));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            error = errno;
        if (n <= 0)
            break;
        done += n;
    }
    bytes.truncate(done);
    return bytes;
}

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

struct ThinHeader {
    bool wide = false; // the 64-bit magic
    uint32_t cputype = 0;
    uint32_t filetype = 0;
};

// One thin header at offset `at` of bytes; nullopt when the bytes there are not one.
std::optional<ThinHeader> thinHeader(const QByteArray &bytes, qint64 at = 0) {
    const std::optional<uint32_t> little = word(bytes, at, false);
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
    const std::optional<uint32_t> cputype = word(bytes, at + 4, bigEndian);
    const std::optional<uint32_t> filetype = word(bytes, at + 12, bigEndian);
    if (!cputype || !filetype)
        return std::nullopt;
    return ThinHeader{magic == thin64Magic, *cputype, *filetype};
}

std::optional<QString> describeThin(const QByteArray &bytes) {
    const std::optional<ThinHeader> header = thinHeader(bytes);
    if (!header)
        return std::nullopt;
    QString text = QStringLiteral("Mach-O");
    if (header->wide)
        text += QStringLiteral(" 64-bit");
    return text + ' ' + fileTypeWord(header->filetype) + ' ' + processorWord(header->cputype);
}

// The universal table's slice offsets; nullopt when the page does not start with one.
std::optional<QList<uint32_t>> fatOffsets(const QByteArray &page) {
    const std::optional<uint32_t> magic = word(page, 0, true);
    const std::optional<uint32_t> count = word(page, 4, true);
    if (!magic || *magic != fatMagic || !count || *count == 0 || *count >= maxFatSlices)
        return std::nullopt;
    if (8 + qint64(*count) * fatEntrySize > page.size())
        return std::nullopt;
    QList<uint32_t> offsets;
    for (uint32_t i = 0; i < *count; ++i)
        offsets << *word(page, 8 + qint64(i) * fatEntrySize + 8, true);
    return offsets;
}

std::optional<QString> describeFat(const QByteArray &page, int fd, const QString &path) {
    const std::optional<QList<uint32_t>> offsets = fatOffsets(page);
    if (!offsets)
        return std::nullopt;
    const qsizetype count = offsets->size();
    QStringList lines;
    lines << (count == 1
                  ? QStringLiteral("Mach-O universal binary with 1 architecture")
                  : QStringLiteral("Mach-O universal binary with %1 architectures").arg(count));
    for (qsizetype i = 0; i < count; ++i) {
        const qint64 entry = 8 + qint64(i) * fatEntrySize;
        const uint32_t cputype = *word(page, entry, true);
        const uint32_t subtype = *word(page, entry + 4, true);
        const uint32_t offset = offsets->at(i);
        // A slice that holds no Mach-O header (or lies past the end) is plain data.
        int ignored = 0;
        const QString slice = describeThin(readAt(fd, offset, thinHeaderSize, ignored))
                                  .value_or(QStringLiteral("data"));
        lines << path + QStringLiteral(" (for architecture ") +
                     MachODescriber::architectureName(cputype, subtype) + QStringLiteral("):\t") +
                     slice;
    }
    return lines.join('\n');
}

QString errorText(const char *what, const QString &path, int error) {
    return QStringLiteral("%1 `%2' (%3)")
        .arg(QLatin1String(what), path, QString::fromLocal8Bit(std::strerror(error)));
}

// What the tool says of a file it may see but not read.
QString unreadable(const QByteArray &native, mode_t mode) {
    QString text;
    if (::access(native.constData(), W_OK) == 0)
        text += QStringLiteral("writable, ");
    if (::access(native.constData(), X_OK) == 0)
        text += QStringLiteral("executable, ");
    if (S_ISREG(mode))
        text += QStringLiteral("regular file, ");
    return text + QStringLiteral("no read permission");
}

// Everything that is not a regular file is named by its kind, without opening it: a
// pipe with no writer would never answer.
std::optional<QString> kindOf(mode_t mode) {
    if (S_ISDIR(mode))
        return QStringLiteral("directory");
    if (S_ISFIFO(mode))
        return QStringLiteral("fifo (named pipe)");
    if (S_ISSOCK(mode))
        return QStringLiteral("socket");
    if (S_ISCHR(mode))
        return QStringLiteral("character special");
    if (S_ISBLK(mode))
        return QStringLiteral("block special");
    return std::nullopt;
}

QString describeFile(const QString &path) {
    const QByteArray native = QFile::encodeName(path);
    struct stat info {};
    if (::stat(native.constData(), &info) != 0)
        return errorText("cannot open", path, errno);
    if (std::optional<QString> kind = kindOf(info.st_mode))
        return *kind;
    // Non-blocking, in case the file was replaced by a pipe since it was looked at.
    const int fd = ::open(native.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0)
        return unreadable(native, info.st_mode);
    const auto closer = qScopeGuard([fd] { ::close(fd); });
    if (::fstat(fd, &info) == 0) {
        if (std::optional<QString> kind = kindOf(info.st_mode))
            return *kind;
    }
    int error = 0;
    const QByteArray page = readAt(fd, 0, firstPage, error);
    if (error != 0)
        return errorText("cannot read", path, error);
    if (page.isEmpty())
        return QStringLiteral("empty");
    std::optional<QString> text = describeThin(page);
    if (!text)
        text = describeFat(page, fd, path);
    return text.value_or(QStringLiteral("data"));
}
} // namespace

QString MachODescriber::describe(const QString &path) {
    return describeFile(path) + QLatin1Char('\n');
}

QStringList MachODescriber::processors(const QString &path) {
    // Non-blocking and checked after opening, in case the file was replaced by a pipe or
    // a device since the caller looked at it.
    const int fd =
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0)
        return {};
    const auto closer = qScopeGuard([fd] { ::close(fd); });
    struct stat info {};
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode))
        return {};
    int error = 0;
    const QByteArray page = readAt(fd, 0, std::min<qint64>(info.st_size, firstPage), error);
    if (error != 0)
        return {};
    QStringList found;
    if (const std::optional<ThinHeader> thin = thinHeader(page)) {
        found << processorWord(thin->cputype);
        return found;
    }
    const std::optional<QList<uint32_t>> offsets = fatOffsets(page);
    if (!offsets)
        return found;
    // The slices' headers beyond the first page, in one read when they lie close together.
    qint64 first = -1;
    qint64 end = 0;
    for (uint32_t offset : *offsets) {
        if (offset + thinHeaderSize > page.size() && offset < info.st_size) {
            first = first < 0 ? offset : std::min<qint64>(first, offset);
            end = std::max<qint64>(end, offset + thinHeaderSize);
        }
    }
    QByteArray span;
    if (first >= 0 && end - first <= maxSpan)
        span = readAt(fd, first, std::min<qint64>(end, info.st_size) - first, error);
    for (uint32_t offset : *offsets) {
        std::optional<ThinHeader> header;
        if (offset + thinHeaderSize <= page.size())
            header = thinHeader(page, offset);
        else if (!span.isEmpty() && offset >= first &&
                 offset + thinHeaderSize <= first + span.size())
            header = thinHeader(span, offset - first);
        else
            header = thinHeader(readAt(fd, offset, thinHeaderSize, error));
        if (!header)
            continue;
        const QString processor = processorWord(header->cputype);
        if (!found.contains(processor))
            found << processor;
    }
    return found;
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

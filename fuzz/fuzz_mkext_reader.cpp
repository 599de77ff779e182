// Feeds arbitrary bytes to the archive reader the way the list and unpack commands use
// it. Besides crashes and sanitizer reports it stops on a name that could leave the
// unpack folder.

#include "mkext/MkextArchive.h"
#include "mkext/MkextFormat.h"
#include "mkext/ZlibCodec.h"

#include <cstdlib>

namespace {

void requireSafeComponent(const QString &name) {
    if (name.isEmpty() || name.contains(QLatin1Char('/')) || name.contains(QChar(0)) ||
        name == QLatin1String(".") || name == QLatin1String(".."))
        abort();
}

// Random mutations almost never keep the length and checksum right, which would stop
// the search at the first checks. Every other input gets both fixed up, for the thin
// archive or for each slice of a fat file, so the parsers behind them are reached.
void reseal(QByteArray &bytes, qsizetype base, qsizetype length) {
    using namespace MkextFormat;
    if (base < 0 || length < CoreHeaderSize || base + length > bytes.size())
        return;
    setWord(bytes, base + 8, uint32_t(length));
    setWord(bytes, base + 12,
            ZlibCodec::adler32(bytes.constData() + base + ChecksumStart, length - ChecksumStart));
}

void resealAll(QByteArray &bytes) {
    using namespace MkextFormat;
    if (bytes.size() < 8 || word(bytes, 0) != FatMagic) {
        reseal(bytes, 0, bytes.size());
        return;
    }
    const uint32_t count = qMin<uint32_t>(word(bytes, 4), 8);
    for (uint32_t i = 0; i < count && FatHeaderSize + (i + 1) * FatArchSize <= bytes.size(); ++i) {
        const qsizetype at = FatHeaderSize + i * FatArchSize;
        reseal(bytes, word(bytes, at + 8), word(bytes, at + 12));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0)
        return 0;
    static const QString archs[] = {QString(), QStringLiteral("x86_64"), QStringLiteral("i386"),
                                    QStringLiteral("ppc")};
    QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    if (size & 1)
        resealAll(bytes);
    MkextArchive::Limits limits;
    // Small enough that an honest over-large claim is not reported as a leak or OOM.
    limits.maxEntrySize = 16 << 20;
    limits.maxPlistSize = 16 << 20;
    limits.plist.maxNodes = 100000;
    const MkextArchive::Opened opened = MkextArchive::open(bytes, archs[(size * 7) % 4], limits);
    if (!opened.archive) {
        if (opened.error.isEmpty())
            abort();
        return 0;
    }
    for (const MkextArchive::Kext &kext : opened.archive->kexts()) {
        requireSafeComponent(MkextArchive::kextName(kext));
        requireSafeComponent(MkextArchive::executableName(kext));
        if (kext.hasExecutable)
            (void)opened.archive->executable(kext);
    }
    return 0;
}

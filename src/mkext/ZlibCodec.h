#pragma once

#include <QByteArray>
#include <optional>

// zlib streams of the second archive version. Inflating never produces more than the
// size the archive declares, so a compression bomb costs at most that much memory.
class ZlibCodec {
public:
    // Exactly `fullSize` bytes, or absent when the stream is corrupt, ends early or
    // would inflate to more.
    static std::optional<QByteArray> inflate(const QByteArray &compressed, qsizetype fullSize);
    // A zlib stream of `plain`; empty when zlib fails.
    static QByteArray deflate(const QByteArray &plain, int level = 6);
    // Adler-32 of the bytes; pass the sum of the bytes before to continue it.
    static uint32_t adler32(const char *data, qsizetype size, uint32_t sumBefore = 1);
};

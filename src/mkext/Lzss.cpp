#include "mkext/Lzss.h"

#include <array>

namespace {
constexpr int RingSize = 4096;
constexpr int MaxMatch = 18;
constexpr int Threshold = 2; // a match is stored only when longer than this
constexpr int RingStart = RingSize - MaxMatch;
} // namespace

std::optional<QByteArray> Lzss::decompress(const QByteArray &compressed, qsizetype fullSize) {
    if (fullSize < 0)
        return std::nullopt;
    std::array<unsigned char, RingSize> ring;
    ring.fill(' ');
    int r = RingStart;
    QByteArray out(fullSize, Qt::Uninitialized);
    qsizetype written = 0;
    const auto *src = reinterpret_cast<const unsigned char *>(compressed.constData());
    const auto *end = src + compressed.size();
    unsigned flags = 0;
    auto put = [&](unsigned char c) {
        if (written >= fullSize)
            return false;
        out[written++] = char(c);
        ring[r] = c;
        r = (r + 1) & (RingSize - 1);
        return true;
    };
    while (true) {
        flags >>= 1;
        if ((flags & 0x100) == 0) {
            if (src >= end)
                break;
            flags = *src++ | 0xff00;
        }
        if (flags & 1) {
            if (src >= end)
                break;
            if (!put(*src++))
                return std::nullopt;
        } else {
            if (end - src < 2)
                break;
            const int low = *src++;
            const int high = *src++;
            const int position = low | ((high & 0xf0) << 4);
            const int length = (high & 0x0f) + Threshold + 1;
            for (int k = 0; k < length; ++k)
                if (!put(ring[(position + k) & (RingSize - 1)]))
                    return std::nullopt;
        }
    }
    if (written != fullSize)
        return std::nullopt;
    return out;
}

QByteArray Lzss::compress(const QByteArray &plain) {
    std::array<unsigned char, RingSize> ring;
    ring.fill(' ');
    int r = RingStart;
    QByteArray out;
    const auto *in = reinterpret_cast<const unsigned char *>(plain.constData());
    const qsizetype size = plain.size();
    qsizetype pos = 0;
    while (pos < size) {
        const qsizetype flagIndex = out.size();
        out.append('\0');
        unsigned char flags = 0;
        for (int item = 0; item < 8 && pos < size; ++item) {
            const int limit = int(std::min<qsizetype>(MaxMatch, size - pos));
            int bestLength = 0;
            int bestPosition = 0;
            // Copying from the ring while writing to it: a match may run into bytes it
            // produces itself, exactly as the decoder replays it.
            for (int start = 0; start < RingSize && bestLength < limit; ++start) {
                int length = 0;
                std::array<unsigned char, MaxMatch> produced{};
                while (length < limit) {
                    const int from = (start + length) & (RingSize - 1);
                    // Positions at or after r within this match hold bytes just produced.
                    const int distance = (from - r + RingSize) & (RingSize - 1);
                    const unsigned char c = distance < length ? produced[distance] : ring[from];
                    if (c != in[pos + length])
                        break;
                    produced[length] = c;
                    ++length;
                }
                if (length > bestLength) {
                    bestLength = length;
                    bestPosition = start;
                }
            }
            if (bestLength > Threshold) {
                out.append(char(bestPosition & 0xff));
                out.append(char(((bestPosition >> 4) & 0xf0) | (bestLength - Threshold - 1)));
                for (int k = 0; k < bestLength; ++k) {
                    ring[r] = in[pos++];
                    r = (r + 1) & (RingSize - 1);
                }
            } else {
                flags |= 1u << item;
                out.append(char(in[pos]));
                ring[r] = in[pos++];
                r = (r + 1) & (RingSize - 1);
            }
        }
        out[flagIndex] = char(flags);
    }
    return out;
}

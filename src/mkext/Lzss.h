#pragma once

#include <QByteArray>
#include <optional>

// The dictionary coder of the first archive version: a 4096-byte ring preset with
// blanks, matches of 3 to 18 bytes, and a flag byte before every eight items, read from
// its least significant bit, 1 meaning a literal.
class Lzss {
public:
    // The decoded bytes, which must come to exactly `fullSize`; absent when the stream
    // ends early or would decode to more (a hostile size never drives an allocation
    // beyond `fullSize`, which the caller bounds).
    static std::optional<QByteArray> decompress(const QByteArray &compressed, qsizetype fullSize);

    // A greedy encoder that searches the whole ring. It is slow on large inputs and is
    // meant for writing small archives of the first version (tests and fuzz seeds).
    static QByteArray compress(const QByteArray &plain);
};

#pragma once

#include "mkext/KextCollector.h"

#include <QByteArray>
#include <QList>
#include <QStringList>

// Writes archives of the second version: one per processor, always inside a fat
// container, each kext's code for that processor compressed only where zlib makes it
// smaller.
class MkextWriter {
public:
    struct Result {
        QByteArray bytes; // empty when no processor got any kext
        QStringList warnings;
    };

    static Result build(const QList<KextSource> &kexts, const QList<uint32_t> &cputypes,
                        int level = 6);

    // One thin archive; empty when no kext has code for the processor.
    static QByteArray archive(const QList<KextSource> &kexts, uint32_t cputype, int level = 6);
};

#pragma once

#include "mkext/KextCollector.h"

#include <QByteArray>
#include <QIODevice>
#include <QList>
#include <QStringList>

// Writes archives of the second version: one per processor, always inside a fat
// container, each kext's code for that processor compressed only where zlib makes it
// smaller.
//
// The kexts stream through: a few at a time are read, sliced and compressed in parallel
// on the thread pool, and their entries are appended in the kexts' order, so the bytes
// are those of a single thread. Each kext's code is dropped once it is compressed: memory
// holds the archives being written and the kexts in flight, whatever the folder's size.
class MkextWriter {
public:
    struct Result {
        QStringList warnings;
        bool empty = true;    // no processor got any kext, and nothing was written
        bool written = false; // the whole fat file went to the device
    };

    static Result write(const QList<KextSource> &kexts, const QList<uint32_t> &cputypes,
                        QIODevice &out, int level = 6);

    // One thin archive; empty when no kext has code for the processor.
    static QByteArray archive(const QList<KextSource> &kexts, uint32_t cputype, int level = 6);
};

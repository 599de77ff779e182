#pragma once

#include "plist/PlistPtr.h"

#include <QByteArray>

// The kernel's own property list dialect, as the archives carry it: no XML declaration
// and no <plist> wrapper, integers with a size attribute and hexadecimal values, and
// objects shared by ID / IDREF attributes. Values land in libplist nodes so the rest
// of the program handles them like any other property list.
class IOKitPlist {
public:
    struct Limits {
        int maxDepth = 64;
        // Every node made counts, copies made for IDREF included, so a chain of
        // references cannot grow the tree without bound.
        qsizetype maxNodes = 1000000;
    };

    // The top-level object (any type), or null on malformed or over-limit text.
    static PlistPtr parse(const QByteArray &xml);
    static PlistPtr parse(const QByteArray &xml, const Limits &limits);
    // Compact text of `node` in the same dialect (no shared objects), without the final
    // NUL the archive adds.
    static QByteArray serialize(plist_t node);
};

#pragma once

#include <memory>
#include <plist/plist.h>

struct PlistFree {
    void operator()(plist_t node) const { plist_free(node); }
};
// Owns a libplist node tree.
using PlistPtr = std::unique_ptr<void, PlistFree>;

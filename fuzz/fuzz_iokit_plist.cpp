// The kernel-dialect property list reader on arbitrary text; whatever it accepts must
// write out and read back.

#include "mkext/IOKitPlist.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const QByteArray text(reinterpret_cast<const char *>(data), qsizetype(size));
    IOKitPlist::Limits limits;
    limits.maxNodes = 100000;
    const PlistPtr root = IOKitPlist::parse(text, limits);
    if (!root)
        return 0;
    if (!IOKitPlist::parse(IOKitPlist::serialize(root.get()), limits))
        abort();
    return 0;
}

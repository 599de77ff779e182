// The `diskutil info` reader on arbitrary text: it cuts the "Mount Point:" line at a
// fixed column, which a short line must survive.

#include "volumes/DiskInfo.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    (void)diskInfoIsStartedSystem(
        QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size)));
    return 0;
}

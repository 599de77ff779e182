// The reader of Info.plists and our settings on arbitrary bytes, XML or binary, deep
// nesting included: whatever passes the depth check must parse and walk without a crash,
// and the typed getters must answer on whatever dictionary comes out.

#include "plist/PlistFile.h"
#include "plist/PlistPrecheck.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    if (!PlistPrecheck::acceptable(bytes)) {
        if (PlistFile::parseDictionary(bytes))
            abort(); // refused bytes must never reach libplist
        return 0;
    }
    const PlistPtr dict = PlistFile::parseDictionary(bytes);
    if (!dict)
        return 0;
    for (const char *key : {"CFBundleIdentifier", "OSBundleRequired", "Custom Kext Directories"}) {
        (void)PlistFile::string(dict.get(), key);
        (void)PlistFile::boolean(dict.get(), key);
        (void)PlistFile::stringArray(dict.get(), key);
    }
    return 0;
}

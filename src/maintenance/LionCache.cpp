#include "maintenance/LionCache.h"

#include "plist/PlistFile.h"
#include "volumes/KextFolders.h"

namespace LionCache {

bool volumeIsLion(const KextFolders &folders) {
    const auto dict = PlistFile::readDictionary(folders.systemVersionFile());
    if (!dict)
        return false;
    const QString version = PlistFile::string(dict.get(), "ProductVersion").value_or(QString());
    return version.size() >= 4 && version.left(4) == QLatin1String("10.7");
}

} // namespace LionCache

#include "maintenance/LionCache.h"

#include "plist/PlistFile.h"

namespace LionCache {

QString startupMkext(const QString &rootPath) {
    return rootPath +
           QStringLiteral("System/Library/Caches/com.apple.kext.caches/Startup/Extensions.mkext");
}

QString versionFile(const QString &rootPath) {
    return rootPath + QStringLiteral("System/Library/CoreServices/SystemVersion.plist");
}

bool volumeIsLion(const QString &rootPath) {
    const auto dict = PlistFile::readDictionary(versionFile(rootPath));
    if (!dict)
        return false;
    const QString version = PlistFile::string(*dict, "ProductVersion").value_or(QString());
    return version.size() >= 4 && version.left(4) == QLatin1String("10.7");
}

} // namespace LionCache

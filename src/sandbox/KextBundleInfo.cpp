#include "sandbox/KextBundleInfo.h"

#include "plist/PlistFile.h"

#include <QDirIterator>
#include <QFileInfo>

std::optional<KextBundleInfo> KextBundleInfo::read(const QString &bundlePath) {
    const bool modern = QFileInfo::exists(bundlePath + QStringLiteral("/Contents/Info.plist"));
    const QString contents = modern ? bundlePath + QStringLiteral("/Contents") : bundlePath;
    const PlistPtr plist = PlistFile::readDictionary(contents + QStringLiteral("/Info.plist"));
    if (!plist)
        return std::nullopt;
    KextBundleInfo info;
    info.identifier = PlistFile::string(plist.get(), "CFBundleIdentifier").value_or(QString());
    if (info.identifier.isEmpty())
        return std::nullopt;
    info.version = PlistFile::string(plist.get(), "CFBundleVersion").value_or(QString());
    const QString executable =
        PlistFile::string(plist.get(), "CFBundleExecutable").value_or(QString());
    if (!executable.isEmpty())
        info.executablePath =
            contents + (modern ? QStringLiteral("/MacOS/") : QStringLiteral("/")) + executable;
    plist_t libraries = plist_dict_get_item(plist.get(), "OSBundleLibraries");
    if (libraries && plist_get_node_type(libraries) == PLIST_DICT) {
        plist_dict_iter it = nullptr;
        plist_dict_new_iter(libraries, &it);
        for (;;) {
            char *key = nullptr;
            plist_t value = nullptr;
            plist_dict_next_item(libraries, it, &key, &value);
            if (!key)
                break;
            info.libraries.append(
                {QString::fromUtf8(key), PlistFile::string(libraries, key).value_or(QString())});
            free(key);
        }
        free(it);
    }
    return info;
}

QMap<QString, QString> KextBundleInfo::index(const QString &folder) {
    QMap<QString, QString> kexts;
    QDirIterator it(folder, {QStringLiteral("*.kext")}, QDir::Dirs | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        if (const std::optional<KextBundleInfo> info = read(path);
            info && !kexts.contains(info->identifier))
            kexts.insert(info->identifier, path);
    }
    return kexts;
}

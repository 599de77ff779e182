#include "install/BackupManifest.h"

#include "plist/PlistFile.h"

namespace {
const char volumeKey[] = "Volume";
const char versionKey[] = "Extra Version";
const char destinationKey[] = "Destination";
const char dateKey[] = "Date";
const char bundlesKey[] = "Bundles";
const char nameKey[] = "Name";
const char fromKey[] = "Removed From";

QString stringItem(plist_t dict, const char *key) {
    return PlistFile::string(dict, key).value_or(QString());
}
} // namespace

bool BackupManifest::write(const QString &backupFolder) const {
    const PlistPtr dict(plist_new_dict());
    PlistFile::putString(dict.get(), volumeKey, volume);
    PlistFile::putString(dict.get(), versionKey, extraVersion);
    PlistFile::putString(dict.get(), destinationKey, destination);
    PlistFile::putString(dict.get(), dateKey, date.toString(Qt::ISODate));
    plist_t list = plist_new_array();
    for (const Bundle &bundle : bundles) {
        plist_t item = plist_new_dict();
        PlistFile::putString(item, nameKey, bundle.name);
        PlistFile::putString(item, fromKey, bundle.removedFrom);
        plist_array_append_item(list, item);
    }
    plist_dict_set_item(dict.get(), bundlesKey, list);
    return PlistFile::writeDictionary(backupFolder + QLatin1Char('/') + fileName(), dict.get());
}

std::optional<BackupManifest> BackupManifest::read(const QString &backupFolder) {
    const auto dict = PlistFile::readDictionary(backupFolder + QLatin1Char('/') + fileName());
    if (!dict)
        return std::nullopt;
    BackupManifest manifest;
    manifest.volume = PlistFile::string(dict.get(), volumeKey).value_or(QString());
    manifest.extraVersion = PlistFile::string(dict.get(), versionKey).value_or(QString());
    manifest.destination = PlistFile::string(dict.get(), destinationKey).value_or(QString());
    manifest.date = QDateTime::fromString(
        PlistFile::string(dict.get(), dateKey).value_or(QString()), Qt::ISODate);
    if (manifest.volume.isEmpty() || manifest.destination.isEmpty())
        return std::nullopt;
    plist_t array = plist_dict_get_item(dict.get(), bundlesKey);
    if (!array || plist_get_node_type(array) != PLIST_ARRAY)
        return std::nullopt;
    for (uint32_t i = 0; i < plist_array_get_size(array); ++i) {
        plist_t item = plist_array_get_item(array, i);
        if (!item || plist_get_node_type(item) != PLIST_DICT)
            continue;
        const Bundle bundle{stringItem(item, nameKey), stringItem(item, fromKey)};
        // A name is one folder below the backup folder, never a way out of it.
        if (bundle.name.isEmpty() || bundle.name.contains(QLatin1Char('/')) ||
            bundle.name == QLatin1String("..") || bundle.removedFrom.isEmpty())
            continue;
        manifest.bundles << bundle;
    }
    return manifest;
}

#include "install/BackupManifest.h"

#include "plist/PlistFile.h"

#include <cstdlib>

namespace {
const char volumeKey[] = "Volume";
const char versionKey[] = "Extra Version";
const char destinationKey[] = "Destination";
const char dateKey[] = "Date";
const char bundlesKey[] = "Bundles";
const char nameKey[] = "Name";
const char fromKey[] = "Removed From";

QString stringItem(plist_t dict, const char *key) {
    plist_t node = plist_dict_get_item(dict, key);
    if (!node || plist_get_node_type(node) != PLIST_STRING)
        return {};
    char *text = nullptr;
    plist_get_string_val(node, &text);
    const QString value = QString::fromUtf8(text ? text : "");
    free(text);
    return value;
}
} // namespace

bool BackupManifest::write(const QString &backupFolder) const {
    PList::Dictionary dict;
    dict.Set(volumeKey, PList::String(volume.toStdString()));
    dict.Set(versionKey, PList::String(extraVersion.toStdString()));
    dict.Set(destinationKey, PList::String(destination.toStdString()));
    dict.Set(dateKey, PList::String(date.toString(Qt::ISODate).toStdString()));
    PList::Array list;
    for (const Bundle &bundle : bundles) {
        PList::Dictionary item;
        item.Set(nameKey, PList::String(bundle.name.toStdString()));
        item.Set(fromKey, PList::String(bundle.removedFrom.toStdString()));
        list.Append(&item);
    }
    dict.Set(bundlesKey, list);
    return PlistFile::writeDictionary(backupFolder + QLatin1Char('/') + fileName(), dict);
}

std::optional<BackupManifest> BackupManifest::read(const QString &backupFolder) {
    const auto dict = PlistFile::readDictionary(backupFolder + QLatin1Char('/') + fileName());
    if (!dict)
        return std::nullopt;
    BackupManifest manifest;
    manifest.volume = PlistFile::string(*dict, volumeKey).value_or(QString());
    manifest.extraVersion = PlistFile::string(*dict, versionKey).value_or(QString());
    manifest.destination = PlistFile::string(*dict, destinationKey).value_or(QString());
    manifest.date =
        QDateTime::fromString(PlistFile::string(*dict, dateKey).value_or(QString()), Qt::ISODate);
    if (manifest.volume.isEmpty() || manifest.destination.isEmpty())
        return std::nullopt;
    // Walked through the C interface, as the wrapper's nested arrays are unreliable.
    plist_t array = plist_dict_get_item(dict->GetPlist(), bundlesKey);
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

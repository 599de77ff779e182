#include "plist/PlistFile.h"

#include "plist/PlistPrecheck.h"
#include "plist/RegularFile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <cstdlib>

PlistPtr PlistFile::readDictionary(const QString &path) {
    return readDictionaryTree(path).tree;
}

PlistFile::Tree PlistFile::readDictionaryTree(const QString &path) {
    const RegularFile::Read read = RegularFile::read(path, maxFileSize);
    if (!read.bytes) {
        const bool missing = !QFileInfo::exists(path);
        return {nullptr, missing ? QString() : read.error};
    }
    const QString problem = PlistPrecheck::problem(*read.bytes);
    if (!problem.isEmpty())
        return {nullptr, problem};
    return {parseDictionary(*read.bytes), QString()};
}

PlistPtr PlistFile::parseDictionary(const QByteArray &bytes) {
    if (bytes.isEmpty() || bytes.size() > 0x7fffffff || !PlistPrecheck::acceptable(bytes))
        return nullptr;
    plist_t root = nullptr;
    plist_from_memory(bytes.constData(), uint32_t(bytes.size()), &root);
    PlistPtr tree(root);
    if (!tree || plist_get_node_type(root) != PLIST_DICT)
        return nullptr;
    return tree;
}

std::optional<QString> PlistFile::string(plist_t dict, const char *key) {
    plist_t node = plist_dict_get_item(dict, key);
    if (!node || plist_get_node_type(node) != PLIST_STRING)
        return std::nullopt;
    char *text = nullptr;
    plist_get_string_val(node, &text);
    const QString value = QString::fromUtf8(text);
    free(text);
    return value;
}

std::optional<bool> PlistFile::boolean(plist_t dict, const char *key) {
    plist_t node = plist_dict_get_item(dict, key);
    if (!node || plist_get_node_type(node) != PLIST_BOOLEAN)
        return std::nullopt;
    uint8_t value = 0;
    plist_get_bool_val(node, &value);
    return value != 0;
}

std::optional<QStringList> PlistFile::stringArray(plist_t dict, const char *key) {
    plist_t array = plist_dict_get_item(dict, key);
    if (!array || plist_get_node_type(array) != PLIST_ARRAY)
        return std::nullopt;
    QStringList values;
    for (uint32_t i = 0; i < plist_array_get_size(array); ++i) {
        plist_t node = plist_array_get_item(array, i);
        if (!node || plist_get_node_type(node) != PLIST_STRING)
            continue;
        char *text = nullptr;
        plist_get_string_val(node, &text);
        if (text)
            values << QString::fromUtf8(text);
        free(text);
    }
    return values;
}

void PlistFile::putString(plist_t dict, const char *key, const QString &value) {
    plist_dict_set_item(dict, key, plist_new_string(value.toUtf8().constData()));
}

void PlistFile::putBoolean(plist_t dict, const char *key, bool value) {
    plist_dict_set_item(dict, key, plist_new_bool(value ? 1 : 0));
}

void PlistFile::putStringArray(plist_t dict, const char *key, const QStringList &values) {
    plist_t array = plist_new_array();
    for (const QString &value : values)
        plist_array_append_item(array, plist_new_string(value.toUtf8().constData()));
    plist_dict_set_item(dict, key, array);
}

bool PlistFile::writeDictionary(const QString &path, plist_t dict) {
    char *xml = nullptr;
    uint32_t length = 0;
    plist_to_xml(dict, &xml, &length);
    if (!xml)
        return false;
    QSaveFile file(path);
    const bool written = file.open(QIODevice::WriteOnly) && file.write(xml, length) == length;
    plist_to_xml_free(xml);
    return written && file.commit();
}

bool PlistFile::setBoolean(const QString &path, const char *key, bool value) {
    const PlistPtr dict = readDictionary(path);
    if (!dict)
        return false;
    putBoolean(dict.get(), key, value);
    return writeDictionary(path, dict.get());
}

#include "plist/PlistFile.h"

#include "plist/PlistPrecheck.h"
#include "plist/RegularFile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <cstdlib>

std::unique_ptr<PList::Dictionary> PlistFile::readDictionary(const QString &path) {
    PlistPtr tree = readDictionaryTree(path).tree;
    if (!tree)
        return nullptr;
    // The C++ wrapper takes ownership of the node tree.
    return std::make_unique<PList::Dictionary>(tree.release());
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
    return {parseDictionaryTree(*read.bytes), QString()};
}

std::unique_ptr<PList::Dictionary> PlistFile::parseDictionary(const QByteArray &bytes) {
    PlistPtr root = parseDictionaryTree(bytes);
    if (!root)
        return nullptr;
    // The C++ wrapper takes ownership of the node tree.
    return std::make_unique<PList::Dictionary>(root.release());
}

PlistPtr PlistFile::parseDictionaryTree(const QByteArray &bytes) {
    if (bytes.isEmpty() || bytes.size() > 0x7fffffff || !PlistPrecheck::acceptable(bytes))
        return nullptr;
    plist_t root = nullptr;
    plist_from_memory(bytes.constData(), uint32_t(bytes.size()), &root);
    PlistPtr tree(root);
    if (!tree || plist_get_node_type(root) != PLIST_DICT)
        return nullptr;
    return tree;
}

std::optional<QString> PlistFile::string(const PList::Dictionary &dict, const char *key) {
    auto it = dict.Find(key);
    if (it == dict.End() || !it->second || it->second->GetType() != PLIST_STRING)
        return std::nullopt;
    return QString::fromStdString(static_cast<PList::String *>(it->second)->GetValue());
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

std::optional<bool> PlistFile::boolean(const PList::Dictionary &dict, const char *key) {
    auto it = dict.Find(key);
    if (it == dict.End() || !it->second || it->second->GetType() != PLIST_BOOLEAN)
        return std::nullopt;
    return static_cast<PList::Boolean *>(it->second)->GetValue();
}

std::optional<QStringList> PlistFile::stringArray(const PList::Dictionary &dict, const char *key) {
    auto it = dict.Find(key);
    if (it == dict.End() || !it->second || it->second->GetType() != PLIST_ARRAY)
        return std::nullopt;
    // Walked through the C interface: the C++ wrapper of a nested array read from a file
    // does not always hold its items (libplist++ 2.2 throws out_of_range from operator[]).
    plist_t array = it->second->GetPlist();
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

bool PlistFile::writeDictionary(const QString &path, const PList::Dictionary &dict) {
    const std::string xml = dict.ToXml();
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(xml.data(), qint64(xml.size()));
    return file.commit();
}

bool PlistFile::setBoolean(const QString &path, const char *key, bool value) {
    std::unique_ptr<PList::Dictionary> dict = readDictionary(path);
    if (!dict)
        return false;
    dict->Set(key, PList::Boolean(value));
    return writeDictionary(path, *dict);
}

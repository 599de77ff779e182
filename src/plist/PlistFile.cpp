#include "plist/PlistFile.h"

#include <QFile>
#include <QSaveFile>

std::unique_ptr<PList::Dictionary> PlistFile::readDictionary(const QString &path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return nullptr;
    return parseDictionary(file.readAll());
}

std::unique_ptr<PList::Dictionary> PlistFile::parseDictionary(const QByteArray &bytes) {
    if (bytes.isEmpty() || bytes.size() > 0x7fffffff)
        return nullptr;
    plist_t root = nullptr;
    plist_from_memory(bytes.constData(), uint32_t(bytes.size()), &root);
    if (!root)
        return nullptr;
    if (plist_get_node_type(root) != PLIST_DICT) {
        plist_free(root);
        return nullptr;
    }
    // The C++ wrapper takes ownership of the node tree.
    return std::make_unique<PList::Dictionary>(root);
}

std::optional<QString> PlistFile::string(const PList::Dictionary &dict, const char *key) {
    auto it = dict.Find(key);
    if (it == dict.End() || !it->second || it->second->GetType() != PLIST_STRING)
        return std::nullopt;
    return QString::fromStdString(static_cast<PList::String *>(it->second)->GetValue());
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
    auto *array = static_cast<PList::Array *>(it->second);
    QStringList values;
    for (unsigned i = 0; i < array->GetSize(); ++i) {
        PList::Node *node = (*array)[i];
        if (node && node->GetType() == PLIST_STRING)
            values << QString::fromStdString(static_cast<PList::String *>(node)->GetValue());
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

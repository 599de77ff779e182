#pragma once

#include "plist/PlistPtr.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <memory>
#include <optional>
#include <plist/plist++.h>

// Thin helpers over libplist++: read a property list file (XML or binary) as a
// dictionary, fetch typed values, and write a dictionary back atomically so that a
// crash never leaves half a settings file behind. Files are read only when regular and
// no larger than maxFileSize, and bytes reach libplist only when PlistPrecheck finds them
// safe for it (nesting no deeper than any real property list, no NUL in a string).
class PlistFile {
public:
    static constexpr qint64 maxFileSize = 8 << 20;

    struct Tree {
        PlistPtr tree;
        QString refusal; // set when the file was refused rather than merely unreadable:
                         // "is not a regular file", "is nested too deeply", ...
    };
    static Tree readDictionaryTree(const QString &path);

    // nullptr when the file is missing, unreadable, malformed or not a dictionary.
    static std::unique_ptr<PList::Dictionary> readDictionary(const QString &path);
    static std::unique_ptr<PList::Dictionary> parseDictionary(const QByteArray &bytes);
    // The same dictionary as libplist's own C tree, for readers that want a key or two
    // and no C++ wrapper around every node (the kext index reads thousands of files).
    static PlistPtr parseDictionaryTree(const QByteArray &bytes);

    static std::optional<QString> string(const PList::Dictionary &dict, const char *key);
    static std::optional<QString> string(plist_t dict, const char *key);
    static std::optional<bool> boolean(const PList::Dictionary &dict, const char *key);
    // Only the string members of an array; absent when the key is not an array.
    static std::optional<QStringList> stringArray(const PList::Dictionary &dict, const char *key);

    // Writes XML through a temporary file that then takes the final name.
    static bool writeDictionary(const QString &path, const PList::Dictionary &dict);

    // Reads the file, sets one boolean and writes it back whole: other keys are kept.
    static bool setBoolean(const QString &path, const char *key, bool value);
};

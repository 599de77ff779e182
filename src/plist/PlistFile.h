#pragma once

#include "plist/PlistPtr.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <memory>
#include <optional>

// Thin helpers over libplist's C interface: read a property list file (XML or binary) as
// a dictionary, fetch typed values, and write a dictionary back atomically so that a
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

    // nullptr when the file is missing, unreadable, malformed or not a dictionary. The C
    // tree is used throughout: the C++ wrapper (libplist++ 2.2) leaks its array items.
    static PlistPtr readDictionary(const QString &path);
    static PlistPtr parseDictionary(const QByteArray &bytes);

    static std::optional<QString> string(plist_t dict, const char *key);
    static std::optional<bool> boolean(plist_t dict, const char *key);
    // Only the string members of an array; absent when the key is not an array.
    static std::optional<QStringList> stringArray(plist_t dict, const char *key);

    // Replace (or add) one member of a dictionary.
    static void putString(plist_t dict, const char *key, const QString &value);
    static void putBoolean(plist_t dict, const char *key, bool value);
    static void putStringArray(plist_t dict, const char *key, const QStringList &values);

    // Writes XML through a temporary file that then takes the final name.
    static bool writeDictionary(const QString &path, plist_t dict);

    // Reads the file, sets one boolean and writes it back whole: other keys are kept.
    static bool setBoolean(const QString &path, const char *key, bool value);
};

#pragma once

#include <QString>
#include <optional>

// Looks at a bundle as a tree of files, without following symbolic links (the copy
// commands keep links as links): whether we can read all of it, how much room it takes,
// and whether a copy of it is complete.
class FileTree {
public:
    // The first entry we cannot read (or the tree itself when it is missing); nothing
    // when every file opens and every folder lists.
    static std::optional<QString> unreadableEntry(const QString &root);

    // Room the tree takes on a file system of this block size: each file rounded up to
    // whole blocks, one block per folder and link.
    static qint64 diskBytes(const QString &root, qint64 blockSize);

    // What makes the copy differ from the original: a missing or extra entry, another
    // kind, size, content or link target, and with compareModes another mode. Nothing
    // when it is a faithful copy.
    static std::optional<QString> difference(const QString &original, const QString &copy,
                                             bool compareModes);

    struct Room {
        qint64 freeBytes = 0;
        qint64 blockSize = 4096;
    };
    // The free room where `path` lies (or would be created), for an ordinary user.
    static std::optional<Room> room(const QString &path);
};

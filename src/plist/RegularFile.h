#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

// Reads a file the program reads by itself (Info.plists, settings, executables, mkext
// archives, logs) only when it is a regular file, and never more than a cap. A named pipe
// would block the open or the read forever and a link to a device such as /dev/zero would
// never end, so both are refused before a byte is read.
class RegularFile {
public:
    struct Read {
        std::optional<QByteArray> bytes; // absent when refused
        QString error;                   // why, to follow the file's name: "is not a regular file"
    };

    // The whole file; refused when it holds more than maxSize bytes.
    static Read read(const QString &path, qint64 maxSize);
    // Why the file would be refused by read(); "" when it would not.
    static QString refusal(const QString &path, qint64 maxSize);
    // At most the first count bytes.
    static Read head(const QString &path, qint64 count);

private:
    static Read readUpTo(const QString &path, qint64 limit, bool wholeOrNothing,
                         bool readBytes = true);
};

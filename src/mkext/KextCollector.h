#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <memory>
#include <optional>

// One kext as it goes into an archive: where it lives, its dictionary and its
// executable file (thin or universal). The collector gives the executable's path only:
// the writer reads it when its turn comes and drops it once compressed, so a folder's
// code is never all in memory at once. Bytes given directly are taken as they are.
struct KextSource {
    QString bundlePath;
    std::shared_ptr<void> info; // libplist dictionary
    bool hasExecutable = false;
    QString executablePath;
    QByteArray executable; // when set, used instead of reading executablePath
    qint64 maxExecutableSize = qint64(256) << 20;

    // The executable's bytes; absent when the file can no longer be read.
    std::optional<QByteArray> loadExecutable() const;
};

// Gathers the kexts of a folder (or a single kext) with their plug-ins, in name order.
// A kext that cannot go into an archive is left out with a warning line.
class KextCollector {
public:
    struct Result {
        QList<KextSource> kexts;
        QStringList warnings;
        QString error; // the folder itself cannot be read
    };
    static Result collect(const QString &path, qsizetype maxExecutableSize = qsizetype(256) << 20);
};

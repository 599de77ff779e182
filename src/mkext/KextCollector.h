#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <memory>

// One kext as it goes into an archive: where it lives, its dictionary and its
// executable file as found on disk (thin or universal).
struct KextSource {
    QString bundlePath;
    std::shared_ptr<void> info; // libplist dictionary
    bool hasExecutable = false;
    QByteArray executable;
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

#pragma once

#include "mkext/IOKitPlist.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <optional>

// One architecture's archive read from an mkext file, checked the way the system's
// unpacking tool checks it. The kexts' dictionaries are parsed when the archive is
// opened; executables are decoded one at a time on request, so memory stays bounded
// by the largest single entry.
class MkextArchive {
public:
    struct Limits {
        qsizetype maxEntrySize = qsizetype(256) << 20;
        qsizetype maxPlistSize = qsizetype(64) << 20;
        IOKitPlist::Limits plist;
    };

    struct Kext {
        // The kext's own dictionary, without the archive's bookkeeping keys.
        std::shared_ptr<void> info;
        QString bundlePath; // empty in the first version
        bool hasExecutable = false;
        // Where the executable is: its entry (second version) or its data (first).
        quint32 executableOffset = 0;
        quint32 compressedSize = 0; // first version only
        quint32 fullSize = 0;       // first version only
    };

    struct Opened;
    // Picks the archive for `arch` ("x86_64", ...; empty: this machine's processor, or
    // the first archive when the file has none for it) and verifies it. On failure
    // Opened::error is the tool's one-line message, without its line feed.
    static Opened open(const QByteArray &file, const QString &arch);
    static Opened open(const QByteArray &file, const QString &arch, const Limits &limits);

    int version() const { return m_version; }
    uint32_t cputype() const { return m_cputype; }
    const QList<Kext> &kexts() const { return m_kexts; }

    // The decoded executable; absent when its entry is damaged.
    std::optional<QByteArray> executable(const Kext &kext) const;
    // The message for a damaged entry of this archive.
    QString damagedText() const;

    // The folder name a kext unpacks to, without ".kext": one safe path component.
    static QString kextName(const Kext &kext);
    // The file name of its executable inside Contents/MacOS: one safe component.
    static QString executableName(const Kext &kext);
    static std::optional<QString> infoString(const Kext &kext, const char *key);

private:
    bool readVersion2(const Limits &limits);
    bool readVersion1(const Limits &limits);
    std::optional<QByteArray> entryBytes(quint32 offset, quint32 stored, quint32 full,
                                         bool lzss) const;

    QByteArray m_file;
    qsizetype m_base = 0;
    qsizetype m_length = 0;
    int m_version = 0;
    uint32_t m_cputype = 0;
    qsizetype m_maxEntrySize = 0;
    QList<Kext> m_kexts;
};

struct MkextArchive::Opened {
    std::optional<MkextArchive> archive;
    QString error;
};

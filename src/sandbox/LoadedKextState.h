#pragma once

#include <QList>
#include <QString>

// The sandbox kernel's list of loaded kexts, kept in a small tab-separated file below
// the root that the stand-ins of kextstat, kextload and kextunload share.
struct LoadedKext {
    int index = 0;
    int refs = 0;
    quint64 address = 0;
    quint32 size = 0;
    QString identifier;
    QString version;
    QList<int> links; // load indexes of the libraries, highest first
};

class LoadedKextState {
public:
    explicit LoadedKextState(const QString &root);

    QString filePath() const;
    QList<LoadedKext> read() const;
    bool write(const QList<LoadedKext> &kexts) const;

    // What the kernel of a fresh sandbox has loaded, from the catalogue.
    static QList<LoadedKext> initial();
    // Appends a kext linked against `libraries` (identifiers that must be loaded) and
    // takes a reference on each of them.
    static void load(QList<LoadedKext> &kexts, const QString &identifier, const QString &version,
                     const QStringList &libraries);
    // Removes the kext and gives back the references it held.
    static void unload(QList<LoadedKext> &kexts, const QString &identifier);
    static const LoadedKext *find(const QList<LoadedKext> &kexts, const QString &identifier);

    // The 64-bit kernel's layout of kextstat, every line ending in a line feed.
    static QString kextstatText(const QList<LoadedKext> &kexts);

private:
    QString m_root;
};

#pragma once

#include <QString>
#include <QStringList>

// What a run of the archive tools printed: standard output, standard error, and the
// exit status.
struct MkextToolOutput {
    QString out;
    QString err;
    int status = 0;
};

// One kext of an archive's listing; "(unknown)" stands for a missing identifier or version.
struct MkextListedKext {
    QString path; // the bundle path the archive records, or NAME.kext
    QString identifier;
    QString version;
};

// Our own stand-ins for the system's archive tools, for systems that no longer have
// them. They print exactly what the tools print, so callers that read the tools'
// output need no second code path.
class MkextBuiltinTool {
public:
    // As `mkextunpack -v FILE`: "Found N kexts:" and one line per kext.
    static MkextToolOutput list(const QString &mkextPath);
    // The same listing as values; on failure `error` holds the line `list` prints.
    struct Listing {
        QList<MkextListedKext> kexts;
        QString error;
    };
    static Listing listing(const QString &mkextPath);
    // As `mkextunpack -a ARCH -d DIR FILE`: silent on success, one error line otherwise.
    // An empty `arch` reads this machine's architecture (or the first one in the file).
    static MkextToolOutput unpack(const QString &arch, const QString &folder,
                                  const QString &mkextPath);
    // Writes a second-version archive of `folder` for `archs` (i386 and x86_64 when
    // empty, in that order) to `mkextPath`. Silent on success apart from warnings.
    static MkextToolOutput build(const QString &mkextPath, const QString &folder,
                                 const QStringList &archs);
    // The same from several folders (or kexts), in order. Like kextcache, the archive's
    // access and modification times become the newest folder's modification time plus
    // one second: boot loaders use an mkext only when its time is exactly that, and load
    // the folder's kexts one by one otherwise.
    static MkextToolOutput build(const QString &mkextPath, const QStringList &folders,
                                 const QStringList &archs);

    // Largest archive file read.
    static constexpr qsizetype MaxFileSize = qsizetype(1) << 30;
};

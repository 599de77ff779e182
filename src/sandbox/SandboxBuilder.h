#pragma once

#include <QString>
#include <QStringList>

// Makes a simulated Mac system root that the program can work on through --root: the
// started system (Volumes/Macintosh HD links back to the root, as on a Mac) with its
// kexts and Extra folder, a Lion backup volume with a KextStore, a plain data volume,
// the kernel's loaded-kext list and the stand-in tools.
class SandboxBuilder {
public:
    // `binary` is the kextkeeper the stand-ins hand over to and that builds the mkext.
    SandboxBuilder(const QString &root, const QString &binary);

    // False, with `error()` set, when the root can't be made; the folder must be missing
    // or empty, so an existing system is never written over.
    bool create();
    QString error() const { return m_error; }
    // Things that went wrong without spoiling the sandbox (the Extra mkext not built).
    QStringList warnings() const { return m_warnings; }

private:
    bool makeFolders();
    // The kexts that were there before the Extra mkext was built, or those added later.
    bool writeKexts(bool later);
    bool applyFlaws();
    void buildStartupCache();
    bool writeSystemVersion(const QString &volume, const QString &version, const QString &build);
    void buildExtraMkext();
    bool fail(const QString &message);

    QString m_root;
    QString m_binary;
    QString m_error;
    QStringList m_warnings;
};

#pragma once

#include <QString>
#include <QStringList>
#include <optional>

// What a careful administrator checks by hand before the first root command of an
// installation: every bundle is still there and can be read whole, the backups can be
// made and have room, the destination has room for the new bundles, and nothing stale
// is in the staging folder's place. Each check answers with one sentence naming the
// bundle or folder and the reason.
class InstallPreflight {
public:
    // Bundles going into `folder`; with `backupsFolder` set, the copies they replace are
    // backed up there first.
    static std::optional<QString> checkInstall(const QStringList &bundles, const QString &folder,
                                               const QString &backupsFolder);

    enum class Staging { Absent, Stale };
    struct StagingCheck {
        Staging staging = Staging::Absent;
        QString problem; // not empty: refuse
    };
    // Bundles packed through `staging` into an archive beside it. A staging folder left
    // by an interrupted run of ours (it holds our mark) is stale and may be removed;
    // anything else in its place is refused.
    static StagingCheck checkPacking(const QStringList &bundles, const QString &staging);

    // The file our staging folder carries, so a leftover can be told from a folder of
    // the user's own.
    static QString stagingMark() { return QStringLiteral(".kextkeeper-staging"); }

    // Room kept free beyond what the bundles take: file systems need some for themselves
    // and the mkext rebuild writes an archive too.
    static qint64 margin(qint64 bytes) { return (qint64(1) << 20) + bytes / 10; }

private:
    static std::optional<QString> checkBundles(const QStringList &bundles);
};

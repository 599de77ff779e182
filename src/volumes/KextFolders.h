#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// Where the kext folders of one volume are, and which of them exist. Made from the
// volume's root as the volume selectors hold it (volumes folder + "/" + title, no slash at
// the end) and the version folder chosen below Extra, if any.
class KextFolders {
public:
    explicit KextFolders(const QString &volumeRoot, const QString &extraVersion = {});

    // The version folders the boot loader may use instead of Extra itself.
    static const QStringList &versions(); // "10.4" .. "10.7"

    // The root with its trailing slash, as the commands take it.
    QString root() const { return m_root; }
    QString extra() const { return m_root + QStringLiteral("Extra"); }
    // Extra itself, or its version folder when one is chosen.
    QString extraBase() const;
    QString extensions() const { return extraBase() + QStringLiteral("/Extensions"); }
    QString kextStore() const { return extraBase() + QStringLiteral("/KextStore"); }
    QString extraMkext() const { return extraBase() + QStringLiteral("/Extensions.mkext"); }
    QString sle() const { return m_root + QStringLiteral("System/Library/Extensions"); }
    // The startup mkext 10.7 can have rebuilt by hand, and the file that tells it is 10.7.
    QString lionStartupMkext() const;
    QString systemVersionFile() const;

    // S/L/E exists.
    bool slePresent() const;
    // The Extra base folder holds Extensions or, failing that, KextStore.
    bool extraPresent() const;
    // Whether Extra/<version> exists, for each of versions() in order.
    QList<bool> versionFolders() const;

private:
    QString m_root;
    QString m_version;
};

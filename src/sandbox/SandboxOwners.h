#pragma once

#include "sandbox/StandInResult.h"

#include <QHash>
#include <QPair>
#include <QString>
#include <QStringList>

// Who owns what on the sandbox Mac. Nobody but root can give a file to root, so the
// sandbox keeps owners in a record instead of in the files: every item counts as
// root:wheel (0:0) unless the record names another owner for it or for a folder above it.
// The stand-in chown writes the record, and the doctor reads it where a Mac's files
// would tell.
class SandboxOwners {
public:
    using Owner = QPair<uint, uint>; // uid, gid

    explicit SandboxOwners(const QString &root);

    static QString recordPath(const QString &root) {
        return root + QStringLiteral("/var/db/owners");
    }
    // Whether the root keeps such a record (a sandbox made by this program does).
    static bool kept(const QString &root);

    Owner owner(const QString &path) const;
    // Gives the item (and with `recursive` everything below it) to `owner`; false when
    // there is no such item.
    bool set(const QString &path, Owner owner, bool recursive);
    bool save() const;

    // `chown [-R] OWNER[:GROUP] PATH...` with numeric ids or root and wheel.
    StandInResult chown(const QStringList &args);

private:
    // The item's path relative to the sandbox root, links above it resolved; absent when
    // it lies outside the sandbox.
    std::optional<QString> relative(const QString &path) const;

    QString m_root;
    QString m_canonicalRoot;
    QHash<QString, Owner> m_entries; // relative path -> owner of it and what lies below
};

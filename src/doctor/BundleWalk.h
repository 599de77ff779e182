#pragma once

#include <QString>
#include <functional>
#include <sys/types.h>

// Walks every item of one kext bundle with lstat, never following a link, and keeps what
// the kernel and the boot loaders object to: items not owned by root:wheel, items others
// than the owner may write, and symbolic links. The kext's plug-in bundles are left out:
// they are kexts of their own. Items are looked at relative to their open folder, so a
// walk costs one call per item and a few per folder, however deep the bundle.
class BundleWalk {
public:
    struct Owner {
        uid_t uid = 0;
        gid_t gid = 0;
        bool operator==(const Owner &) const = default;
    };
    // The owner an item counts as having: on a real volume the one lstat gives; a sandbox,
    // where nobody can give files to root, keeps its owners in a record instead.
    using OwnerLookup = std::function<Owner(const QString &path, Owner onDisk)>;

    struct Result {
        bool isLink = false; // the bundle itself is a link
        int foreignOwned = 0;
        QString firstForeign; // relative to the bundle; "" for the bundle folder itself
        Owner foreignOwner;
        int writable = 0;
        QString firstWritable;
        mode_t writableMode = 0;
        int links = 0;
        QString firstLink;
        QString linkTarget;
        bool wantedFound = false; // the plain file asked for was met
    };

    // `wanted` is a path relative to the bundle (its executable) whose being there as a
    // plain file the walk notes on its way, so that nobody has to ask again.
    static Result walk(const QString &bundle, const OwnerLookup &owner,
                       const QString &wanted = QString());
};

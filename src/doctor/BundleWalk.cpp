#include "doctor/BundleWalk.h"

#include <QFile>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

// Deeper than any bundle is built; links are never followed, so only a real tree this
// deep could get here.
constexpr int MaxDepth = 32;

class Walker {
public:
    Walker(QString bundle, const BundleWalk::OwnerLookup &owner)
        : m_bundle(std::move(bundle)), m_owner(owner) {}

    BundleWalk::Result result;

    void walk() {
        const QByteArray native = QFile::encodeName(m_bundle);
        struct stat st;
        if (::lstat(native.constData(), &st) != 0)
            return;
        result.isLink = S_ISLNK(st.st_mode);
        if (!note(QString(), st, AT_FDCWD, native.constData()) || !S_ISDIR(st.st_mode))
            return;
        visitFolder(native, QString(), 0);
    }

private:
    // Keeps what is wrong with one item; false for a link, which is not looked into.
    bool note(const QString &relative, const struct stat &st, int folder, const char *name) {
        checkOwner(relative, st);
        if (S_ISLNK(st.st_mode)) {
            if (result.links++ == 0) {
                result.firstLink = relative;
                char target[4096];
                const ssize_t size = ::readlinkat(folder, name, target, sizeof target);
                if (size > 0)
                    result.linkTarget = QFile::decodeName(QByteArray(target, int(size)));
            }
            return false; // a link's own mode means nothing, and it is never followed
        }
        if ((st.st_mode & (S_IWGRP | S_IWOTH)) && result.writable++ == 0) {
            result.firstWritable = relative;
            result.writableMode = st.st_mode & 07777;
        }
        if (S_ISREG(st.st_mode))
            result.regularFiles.insert(relative);
        return true;
    }

    void checkOwner(const QString &relative, const struct stat &st) {
        BundleWalk::Owner owner{st.st_uid, st.st_gid};
        if (m_owner)
            owner = m_owner(relative.isEmpty() ? m_bundle : m_bundle + '/' + relative, owner);
        if (owner == BundleWalk::Owner{} || result.foreignOwned++ > 0)
            return;
        result.firstForeign = relative;
        result.foreignOwner = owner;
    }

    // A plug-in folder's bundles are kexts of their own, checked on their own.
    static bool isPlugInFolder(const QString &relative) {
        return relative == QLatin1String("Contents/PlugIns") ||
               relative == QLatin1String("PlugIns");
    }

    // The folder is opened by its path: opening it relative to its parent would cost the
    // C library two more calls per folder than it saves the kernel.
    void visitFolder(const QByteArray &native, const QString &relative, int depth) {
        DIR *dir = ::opendir(native.constData());
        if (!dir)
            return;
        std::vector<QByteArray> names;
        while (const dirent *entry = ::readdir(dir)) {
            const QByteArray name(entry->d_name);
            if (name != "." && name != "..")
                names.push_back(name);
        }
        const bool plugIns = isPlugInFolder(relative);
        std::vector<std::pair<QByteArray, QString>> folders;
        for (const QByteArray &name : names) {
            if (plugIns && name.endsWith(".kext"))
                continue;
            const QString decoded = QFile::decodeName(name);
            const QString item = relative.isEmpty() ? decoded : relative + '/' + decoded;
            struct stat st;
            if (::fstatat(::dirfd(dir), name.constData(), &st, AT_SYMLINK_NOFOLLOW) != 0)
                continue;
            if (note(item, st, ::dirfd(dir), name.constData()) && S_ISDIR(st.st_mode))
                folders.emplace_back(native + '/' + name, item);
        }
        ::closedir(dir);
        if (depth >= MaxDepth)
            return;
        for (const auto &[path, item] : folders)
            visitFolder(path, item, depth + 1);
    }

    QString m_bundle;
    const BundleWalk::OwnerLookup &m_owner;
};

} // namespace

BundleWalk::Result BundleWalk::walk(const QString &bundle, const OwnerLookup &owner) {
    Walker walker(bundle, owner);
    walker.walk();
    return walker.result;
}

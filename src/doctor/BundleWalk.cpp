#include "doctor/BundleWalk.h"

#include <QFile>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

// Deeper than any bundle is built; links are never followed, so only a real tree this
// deep could get here.
constexpr int MaxDepth = 32;

// A bundle holds a handful of items, and most of them are fine: an item's path is only
// spelled out as text when there is something to say about it.
class Walker {
public:
    Walker(const QString &bundle, const BundleWalk::OwnerLookup &owner, const QString &wanted)
        : m_bundle(bundle), m_owner(owner), m_wanted(QFile::encodeName(wanted)),
          m_path(QFile::encodeName(bundle)), m_base(m_path.size() + 1) {}

    BundleWalk::Result result;

    void walk() {
        struct stat st;
        if (::lstat(m_path.constData(), &st) != 0)
            return;
        result.isLink = S_ISLNK(st.st_mode);
        if (!note(nullptr, st, AT_FDCWD, m_path.constData()) || !S_ISDIR(st.st_mode))
            return;
        visitFolder(0);
    }

private:
    // The folder being visited relative to the bundle, in the file system's spelling.
    QByteArray folder() const { return m_path.size() > m_base ? m_path.mid(m_base) : QByteArray(); }

    // An item of the folder being visited relative to the bundle; "" for the bundle itself.
    QString relative(const char *name) const {
        if (!name)
            return QString();
        const QByteArray in = folder();
        return QFile::decodeName(in.isEmpty() ? QByteArray(name) : in + '/' + name);
    }

    bool isWanted(const char *name) const {
        if (m_wanted.isEmpty() || !name)
            return false;
        const qsizetype length = qsizetype(std::strlen(name));
        const qsizetype in = m_path.size() > m_base ? m_path.size() - m_base + 1 : 0;
        if (in + length != m_wanted.size())
            return false;
        return (in == 0 || (std::memcmp(m_wanted.constData(), m_path.constData() + m_base,
                                        size_t(in - 1)) == 0 &&
                            m_wanted.at(in - 1) == '/')) &&
               std::memcmp(m_wanted.constData() + in, name, size_t(length)) == 0;
    }

    // Keeps what is wrong with one item (`name` in the folder being visited, or the bundle
    // itself when null); false for a link, which is not looked into.
    bool note(const char *name, const struct stat &st, int at, const char *linkName) {
        checkOwner(name, st);
        if (S_ISLNK(st.st_mode)) {
            if (result.links++ == 0) {
                result.firstLink = relative(name);
                char target[4096];
                const ssize_t size = ::readlinkat(at, linkName, target, sizeof target);
                if (size > 0)
                    result.linkTarget = QFile::decodeName(QByteArray(target, int(size)));
            }
            return false; // a link's own mode means nothing, and it is never followed
        }
        if ((st.st_mode & (S_IWGRP | S_IWOTH)) && result.writable++ == 0) {
            result.firstWritable = relative(name);
            result.writableMode = st.st_mode & 07777;
        }
        if (S_ISREG(st.st_mode) && isWanted(name))
            result.wantedFound = true;
        return true;
    }

    void checkOwner(const char *name, const struct stat &st) {
        BundleWalk::Owner owner{st.st_uid, st.st_gid};
        if (m_owner) {
            const QString item = relative(name);
            owner = m_owner(item.isEmpty() ? m_bundle : m_bundle + '/' + item, owner);
        }
        if (owner == BundleWalk::Owner{} || result.foreignOwned++ > 0)
            return;
        result.firstForeign = relative(name);
        result.foreignOwner = owner;
    }

    // A plug-in folder's bundles are kexts of their own, checked on their own.
    bool inPlugInFolder() const {
        const QByteArray in = folder();
        return in == "Contents/PlugIns" || in == "PlugIns";
    }

    // The folder is opened by its path: opening it relative to its parent would cost the
    // C library two more calls per folder than it saves the kernel.
    void visitFolder(int depth) {
        DIR *dir = ::opendir(m_path.constData());
        if (!dir)
            return;
        std::vector<QByteArray> names;
        while (const dirent *entry = ::readdir(dir)) {
            const char *name = entry->d_name;
            if (std::strcmp(name, ".") != 0 && std::strcmp(name, "..") != 0)
                names.emplace_back(name);
        }
        const bool plugIns = inPlugInFolder();
        std::vector<QByteArray> folders;
        for (const QByteArray &name : names) {
            if (plugIns && name.endsWith(".kext"))
                continue;
            struct stat st;
            if (::fstatat(::dirfd(dir), name.constData(), &st, AT_SYMLINK_NOFOLLOW) != 0)
                continue;
            if (note(name.constData(), st, ::dirfd(dir), name.constData()) && S_ISDIR(st.st_mode))
                folders.push_back(name);
        }
        ::closedir(dir);
        if (depth >= MaxDepth)
            return;
        const qsizetype length = m_path.size();
        for (const QByteArray &name : folders) {
            m_path.append('/').append(name);
            visitFolder(depth + 1);
            m_path.truncate(length);
        }
    }

    const QString &m_bundle;
    const BundleWalk::OwnerLookup &m_owner;
    const QByteArray m_wanted;
    QByteArray m_path; // the folder being visited, or the bundle
    const qsizetype m_base;
};

} // namespace

BundleWalk::Result BundleWalk::walk(const QString &bundle, const OwnerLookup &owner,
                                    const QString &wanted) {
    Walker walker(bundle, owner, wanted);
    walker.walk();
    return walker.result;
}

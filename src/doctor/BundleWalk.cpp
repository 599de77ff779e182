#include "doctor/BundleWalk.h"

#include <QFile>
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Deeper than any bundle is built; lstat never follows links, so only a real tree this
// deep could get here.
constexpr int MaxDepth = 32;

class Walker {
public:
    Walker(QString bundle, const BundleWalk::OwnerLookup &owner)
        : m_bundle(std::move(bundle)), m_owner(owner) {}

    BundleWalk::Result result;

    void visit(const QString &relative, int depth) {
        const QString path = relative.isEmpty() ? m_bundle : m_bundle + '/' + relative;
        const QByteArray native = QFile::encodeName(path);
        struct stat st;
        if (::lstat(native.constData(), &st) != 0)
            return;
        checkOwner(path, relative, st);
        if (S_ISLNK(st.st_mode)) {
            noteLink(relative, native);
            return; // a link's own mode means nothing, and it is never followed
        }
        if (st.st_mode & (S_IWGRP | S_IWOTH)) {
            if (result.writable++ == 0) {
                result.firstWritable = relative;
                result.writableMode = st.st_mode & 07777;
            }
        }
        if (S_ISDIR(st.st_mode) && depth < MaxDepth)
            visitFolder(relative, native, depth);
    }

private:
    void checkOwner(const QString &path, const QString &relative, const struct stat &st) {
        BundleWalk::Owner owner{st.st_uid, st.st_gid};
        if (m_owner)
            owner = m_owner(path, owner);
        if (owner == BundleWalk::Owner{} || result.foreignOwned++ > 0)
            return;
        result.firstForeign = relative;
        result.foreignOwner = owner;
    }

    void noteLink(const QString &relative, const QByteArray &native) {
        if (result.links++ > 0)
            return;
        result.firstLink = relative;
        char target[4096];
        const ssize_t size = ::readlink(native.constData(), target, sizeof target);
        if (size > 0)
            result.linkTarget = QFile::decodeName(QByteArray(target, size));
    }

    // A plug-in folder's bundles are kexts of their own, checked on their own.
    bool isPlugInFolder(const QString &relative) const {
        return relative == QLatin1String("Contents/PlugIns") ||
               relative == QLatin1String("PlugIns");
    }

    void visitFolder(const QString &relative, const QByteArray &native, int depth) {
        DIR *dir = ::opendir(native.constData());
        if (!dir)
            return;
        QStringList names;
        while (const dirent *entry = ::readdir(dir)) {
            const QString name = QFile::decodeName(entry->d_name);
            if (name != QLatin1String(".") && name != QLatin1String(".."))
                names << name;
        }
        ::closedir(dir);
        const bool plugIns = isPlugInFolder(relative);
        for (const QString &name : std::as_const(names)) {
            if (plugIns && name.endsWith(QLatin1String(".kext")))
                continue;
            visit(relative.isEmpty() ? name : relative + '/' + name, depth + 1);
        }
    }

    QString m_bundle;
    const BundleWalk::OwnerLookup &m_owner;
};

} // namespace

BundleWalk::Result BundleWalk::walk(const QString &bundle, const OwnerLookup &owner) {
    Walker walker(bundle, owner);
    walker.visit(QString(), 0);
    return walker.result;
}

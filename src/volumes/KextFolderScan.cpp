#include "volumes/KextFolderScan.h"

#include "plist/PlistFile.h"

#include <QFile>
#include <cerrno>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

bool exists(const QByteArray &path) {
    struct stat status;
    return ::stat(path.constData(), &status) == 0;
}

bool isFolder(const QByteArray &path, unsigned char type) {
    if (type == DT_DIR)
        return true;
    if (type != DT_LNK && type != DT_UNKNOWN)
        return false;
    struct stat status;
    return ::stat(path.constData(), &status) == 0 && S_ISDIR(status.st_mode);
}

// The whole file when it is a regular file of sensible size; a named pipe or a device
// is refused without waiting on it.
std::optional<QByteArray> readRegular(int fd) {
    struct stat status;
    if (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_size > KextFolderScan::MaxInfoPlistSize)
        return std::nullopt;
    QByteArray bytes(qsizetype(status.st_size), Qt::Uninitialized);
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t got = ::read(fd, bytes.data() + done, size_t(bytes.size() - done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        done += got;
    }
    bytes.truncate(done);
    return bytes;
}

struct Entry {
    QByteArray name;
    unsigned char type;
};

} // namespace

KextFolderScan::KextFolderScan(QStringList &paths, QStringList &identifiers)
    : m_paths(paths), m_identifiers(identifiers) {}

void KextFolderScan::setVisitor(std::function<void(const Bundle &)> visitor, PlugIns spelling) {
    m_visitor = std::move(visitor);
    m_plugIns = spelling;
}

KextFolderScan::InfoFile KextFolderScan::readInfo(const QByteArray &bundle) {
    // The Contents/Info.plist form first; the bundle's own Info.plist only when the
    // first is not there at all (one that is there but unreadable gives no identifier).
    for (const char *name : {"/Contents/Info.plist", "/Info.plist"}) {
        const QByteArray path = bundle + name;
        const int fd = ::open(path.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
        if (fd < 0) {
            // Opening answers "missing" for most failures; any other answer is checked,
            // since a folder we may not search hides its file as well as a missing one.
            if (errno == ENOENT || errno == ENOTDIR || !exists(path))
                continue;
            return {path, nullptr};
        }
        const std::optional<QByteArray> bytes = readRegular(fd);
        ::close(fd);
        return {path, bytes ? PlistFile::parseDictionary(*bytes) : nullptr};
    }
    return {};
}

QString KextFolderScan::identifier(const QByteArray &bundle) {
    const InfoFile info = readInfo(bundle);
    return info.tree ? PlistFile::string(info.tree.get(), "CFBundleIdentifier").value_or(QString())
                     : QString();
}

void KextFolderScan::scan(const QString &folder) {
    scan(folder, QFile::encodeName(folder), QString());
}

void KextFolderScan::scan(const QString &folder, const QByteArray &native,
                          const QString &container) {
    // An unreadable or missing folder lists nothing.
    DIR *dir = ::opendir(native.constData());
    if (!dir)
        return;
    struct stat status;
    if (::fstat(dirfd(dir), &status) != 0 ||
        m_open.count({quint64(status.st_dev), quint64(status.st_ino)})) {
        ::closedir(dir);
        return;
    }
    const std::pair<quint64, quint64> self{quint64(status.st_dev), quint64(status.st_ino)};
    m_open.insert(self);

    // The whole listing first, hidden names included, so no folder stays open while
    // the plug-ins are scanned.
    std::vector<Entry> entries;
    while (const dirent *entry = ::readdir(dir)) {
        const char *name = entry->d_name;
        if (!std::strcmp(name, ".") || !std::strcmp(name, "..") || !std::strcmp(name, ".DS_Store"))
            continue;
        entries.push_back({QByteArray(name), entry->d_type});
    }
    ::closedir(dir);

    for (const Entry &entry : entries) {
        const QByteArray path = native + '/' + entry.name;
        const QString shown = folder + QLatin1Char('/') + QFile::decodeName(entry.name);
        m_paths << shown;
        if (!isFolder(path, entry.type)) {
            m_identifiers << QString();
            continue;
        }
        const InfoFile info = readInfo(path);
        m_identifiers
            << (info.tree
                    ? PlistFile::string(info.tree.get(), "CFBundleIdentifier").value_or(QString())
                    : QString());
        if (m_visitor)
            m_visitor({shown, container, QFile::decodeName(info.path), info.tree.get()});
        scanPlugIns(shown, path, info.path);
    }
    m_open.erase(self);
}

void KextFolderScan::scanPlugIns(const QString &shown, const QByteArray &path,
                                 const QByteArray &infoFile) {
    if (m_plugIns == PlugIns::Loader) {
        // An information file found in Contents already told that Contents is there; and a
        // plug-in folder that is not there fails to open as cheaply as it fails a test.
        static constexpr char inContents[] = "/Contents/Info.plist";
        const bool contents = (infoFile.size() == path.size() + qsizetype(sizeof inContents) - 1 &&
                               infoFile.endsWith(inContents)) ||
                              exists(path + "/Contents");
        const char *relative = contents ? "/Contents/PlugIns" : "/PlugIns";
        scan(shown + QLatin1String(relative), path + relative, shown);
        return;
    }
    // Spelled with a lower-case "i" on purpose: on a case-insensitive volume this matches
    // the usual "PlugIns", on a case-sensitive one it does not.
    const QByteArray contentsPlugins = path + "/Contents/Plugins";
    if (exists(contentsPlugins))
        scan(shown + QStringLiteral("/Contents/Plugins"), contentsPlugins, shown);
    const QByteArray plugins = path + "/Plugins";
    if (exists(plugins))
        scan(shown + QStringLiteral("/Plugins"), plugins, shown);
}

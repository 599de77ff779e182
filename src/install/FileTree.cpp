#include "install/FileTree.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <sys/statvfs.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;

namespace {

fs::path fsPath(const QString &path) {
    return fs::path(QFile::encodeName(path).toStdString());
}

QString qPath(const fs::path &path) {
    return QFile::decodeName(QByteArray::fromStdString(path.string()));
}

// Every entry below root (root itself first), links not followed; false when a folder
// cannot be listed.
bool walk(const fs::path &root, const std::function<bool(const fs::path &)> &visit) {
    if (!visit(root))
        return false;
    std::error_code error;
    if (!fs::is_directory(fs::symlink_status(root, error)))
        return true;
    fs::directory_iterator it(root, error), end;
    if (error)
        return false;
    std::vector<fs::path> children;
    for (; it != end; it.increment(error)) {
        if (error)
            return false;
        children.push_back(it->path());
    }
    for (const fs::path &child : children)
        if (!walk(child, visit))
            return false;
    return true;
}

bool canOpen(const fs::path &path, bool folder) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC |
                                            (folder ? O_DIRECTORY : 0));
    if (fd < 0)
        return false;
    ::close(fd);
    return true;
}

bool sameBytes(const fs::path &a, const fs::path &b) {
    QFile one(qPath(a)), two(qPath(b));
    // A file root copied with a mode that keeps us out is judged by its size alone.
    if (!one.open(QIODevice::ReadOnly) || !two.open(QIODevice::ReadOnly))
        return true;
    while (!one.atEnd()) {
        if (one.read(1 << 16) != two.read(1 << 16))
            return false;
    }
    return two.atEnd();
}

QString kindName(fs::file_type type) {
    switch (type) {
    case fs::file_type::directory:
        return QStringLiteral("folder");
    case fs::file_type::symlink:
        return QStringLiteral("link");
    case fs::file_type::regular:
        return QStringLiteral("file");
    case fs::file_type::not_found:
        return QStringLiteral("missing");
    default:
        return QStringLiteral("special file");
    }
}

} // namespace

std::optional<QString> FileTree::unreadableEntry(const QString &root) {
    std::optional<QString> found;
    const bool listed = walk(fsPath(root), [&](const fs::path &entry) {
        std::error_code error;
        const fs::file_status status = fs::symlink_status(entry, error);
        const bool ok = !error && status.type() != fs::file_type::not_found &&
                        (fs::is_symlink(status) || canOpen(entry, fs::is_directory(status)));
        if (!ok)
            found = qPath(entry);
        return ok;
    });
    if (!listed && !found)
        found = root;
    return found;
}

qint64 FileTree::diskBytes(const QString &root, qint64 blockSize) {
    qint64 total = 0;
    const qint64 block = qMax<qint64>(1, blockSize);
    walk(fsPath(root), [&](const fs::path &entry) {
        std::error_code error;
        const fs::file_status status = fs::symlink_status(entry, error);
        qint64 bytes = 0;
        if (fs::is_regular_file(status))
            bytes = qint64(fs::file_size(entry, error));
        total += qMax<qint64>(1, (bytes + block - 1) / block) * block;
        return true;
    });
    return total;
}

std::optional<QString> FileTree::difference(const QString &original, const QString &copy,
                                            bool compareModes) {
    const fs::path from = fsPath(original);
    const fs::path to = fsPath(copy);
    std::optional<QString> found;
    qsizetype originalEntries = 0;
    const bool listed = walk(from, [&](const fs::path &entry) {
        ++originalEntries;
        const fs::path relative = entry.lexically_relative(from);
        const fs::path other = relative == "." ? to : to / relative;
        const QString where = qPath(other);
        std::error_code e1, e2;
        const fs::file_status a = fs::symlink_status(entry, e1);
        const fs::file_status b = fs::symlink_status(other, e2);
        if (b.type() == fs::file_type::not_found)
            found = where + QStringLiteral(" is missing");
        else if (a.type() != b.type())
            found =
                where +
                QStringLiteral(" is a %1, not a %2").arg(kindName(b.type()), kindName(a.type()));
        else if (fs::is_symlink(a) && fs::read_symlink(entry, e1) != fs::read_symlink(other, e2))
            found = where + QStringLiteral(" points elsewhere");
        else if (fs::is_regular_file(a) && fs::file_size(entry, e1) != fs::file_size(other, e2))
            found = where + QStringLiteral(" has another size");
        else if (fs::is_regular_file(a) && !sameBytes(entry, other))
            found = where + QStringLiteral(" has other contents");
        else if (compareModes && !fs::is_symlink(a) && a.permissions() != b.permissions())
            found = where + QStringLiteral(" has another mode");
        return !found;
    });
    if (found)
        return found;
    if (!listed)
        return original + QStringLiteral(" cannot be read");
    qsizetype copyEntries = 0;
    walk(to, [&](const fs::path &) {
        ++copyEntries;
        return true;
    });
    if (copyEntries != originalEntries)
        return copy + QStringLiteral(" holds entries the original does not");
    return std::nullopt;
}

std::optional<FileTree::Room> FileTree::room(const QString &path) {
    // A folder still to be made lies on the file system of its nearest existing parent.
    QString existing = QDir::cleanPath(path);
    while (!QFileInfo::exists(existing) && existing != QLatin1String("/") && !existing.isEmpty())
        existing = QFileInfo(existing).path();
    struct statvfs info {};
    if (::statvfs(QFile::encodeName(existing).constData(), &info) != 0)
        return std::nullopt;
    const qint64 block = info.f_frsize ? qint64(info.f_frsize) : qint64(info.f_bsize);
    return Room{qint64(info.f_bavail) * block, block};
}

#include "plist/RegularFile.h"

#include <QFile>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

RegularFile::Read RegularFile::read(const QString &path, qint64 maxSize) {
    return readUpTo(path, maxSize, true);
}

QString RegularFile::refusal(const QString &path, qint64 maxSize) {
    return readUpTo(path, maxSize, true, false).error;
}

RegularFile::Read RegularFile::head(const QString &path, qint64 count) {
    return readUpTo(path, count, false);
}

RegularFile::Read RegularFile::readUpTo(const QString &path, qint64 limit, bool wholeOrNothing,
                                        bool readBytes) {
    // Non-blocking, so that opening a pipe with no writer returns at once.
    const int fd =
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0)
        return {std::nullopt, QStringLiteral("cannot be opened (%1)")
                                  .arg(QString::fromLocal8Bit(std::strerror(errno)))};
    struct stat info {};
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(fd);
        return {std::nullopt, QStringLiteral("is not a regular file")};
    }
    const QString tooLarge = QStringLiteral("is larger than %1 bytes").arg(limit);
    if (wholeOrNothing && info.st_size > limit) {
        ::close(fd);
        return {std::nullopt, tooLarge};
    }
    if (!readBytes) {
        ::close(fd);
        return {QByteArray(), QString()};
    }
    // One byte past the limit tells a file that grew while we read it.
    const qint64 want = wholeOrNothing ? limit + 1 : limit;
    QByteArray bytes;
    bytes.resize(qsizetype(qMin<qint64>(want, qMax<qint64>(info.st_size, 0) + 1)));
    qint64 got = 0;
    while (got < want) {
        if (got == bytes.size())
            bytes.resize(qsizetype(qMin<qint64>(want, qint64(bytes.size()) * 2 + 4096)));
        const ssize_t n = ::read(fd, bytes.data() + got, size_t(bytes.size() - got));
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0) {
            const QString why = QString::fromLocal8Bit(std::strerror(errno));
            ::close(fd);
            return {std::nullopt, QStringLiteral("cannot be read (%1)").arg(why)};
        }
        if (n == 0)
            break;
        got += n;
    }
    ::close(fd);
    if (wholeOrNothing && got > limit)
        return {std::nullopt, tooLarge};
    bytes.truncate(qsizetype(got));
    return {bytes, QString()};
}

#include "exec/FileLock.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

FileLock::FileLock(const QString &path) {
    QDir().mkpath(QFileInfo(path).path());
    const int fd = ::open(QFile::encodeName(path).constData(),
                          O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0) {
        m_error = QString::fromLocal8Bit(std::strerror(errno));
        return;
    }
    int rc;
    while ((rc = ::flock(fd, LOCK_EX)) != 0 && errno == EINTR) {
    }
    if (rc != 0) {
        m_error = QString::fromLocal8Bit(std::strerror(errno));
        ::close(fd);
        return;
    }
    m_fd = fd;
}

FileLock::~FileLock() {
    if (m_fd >= 0)
        ::close(m_fd); // closing the last descriptor releases the lock
}

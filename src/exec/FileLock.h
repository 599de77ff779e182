#pragma once

#include <QString>

// An exclusive flock(2) on a file, held from construction to destruction. flock locks
// belong to the open file, so two holders in one process exclude each other as two
// processes do. The lock file is created when missing; a symbolic link in its place is
// not followed, and then the lock is not held.
class FileLock {
public:
    explicit FileLock(const QString &path);
    ~FileLock();
    FileLock(const FileLock &) = delete;
    FileLock &operator=(const FileLock &) = delete;

    bool held() const { return m_fd >= 0; }
    // Why the lock is not held.
    QString error() const { return m_error; }

private:
    int m_fd = -1;
    QString m_error;
};

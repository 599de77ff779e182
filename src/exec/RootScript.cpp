#include "exec/RootScript.h"

#include "exec/AdminAuthentication.h"
#include "exec/Command.h"
#include "exec/ProcessRunner.h"

#include "exec/FileLock.h"
#include "plist/RegularFile.h"

#include <QFile>
#include <QSaveFile>
#include <QStandardPaths>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
bool isLink(const QString &path) {
    struct stat info {};
    return ::lstat(QFile::encodeName(path).constData(), &info) == 0 && S_ISLNK(info.st_mode);
}

QString systemError() {
    return QString::fromLocal8Bit(std::strerror(errno));
}
} // namespace

RootScript::RootScript(AdminAuthentication &session, const QString &home, const QString &lockPath)
    : m_session(session), m_home(home),
      m_lockPath(lockPath.isEmpty() ? defaultLockPath() : lockPath) {}

QString RootScript::defaultLockPath() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/kextkeeper/root-script.lock");
}

QString RootScript::scriptLine(const QString &command, const QString &argument) const {
    return command + QLatin1Char(' ') + shellQuote(argument, true) + QStringLiteral(" 2> ") +
           shellQuote(logPath());
}

std::optional<QString> RootScript::run(const QString &command, const QString &argument) {
    const FileLock lock(m_lockPath);
    if (!lock.held())
        return QStringLiteral("Can't lock %1 to run a root command: %2")
            .arg(m_lockPath, lock.error());
    return runLocked(command, argument);
}

std::optional<QString> RootScript::runLocked(const QString &command, const QString &argument) {
    for (const QString &path : {scriptPath(), logPath()}) {
        if (isLink(path))
            return QStringLiteral("%1 is a symbolic link; root commands will not follow it.")
                .arg(path);
    }
    {
        // Written beside and renamed over: the name is replaced, nothing it pointed to.
        QSaveFile script(scriptPath());
        if (script.open(QIODevice::WriteOnly)) {
            script.write(scriptLine(command, argument).toUtf8());
            script.commit();
        }
    }
    if (!m_session.authorizeRootTask())
        return std::nullopt;

    const QByteArray log = QFile::encodeName(logPath());
    if (::unlink(log.constData()) != 0 && errno != ENOENT)
        return QStringLiteral("Can't remove %1: %2").arg(logPath(), systemError());
    const int fd =
        ::open(log.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0)
        return QStringLiteral("Can't create %1: %2").arg(logPath(), systemError());
    ::close(fd);

    m_session.executeCommandSynced(QStringLiteral("/bin/sh"), {scriptPath()});

    const RegularFile::Read read = RegularFile::read(logPath(), maxLogSize);
    std::optional<QString> text;
    if (read.bytes)
        text = ProcessRunner::decodeUtf8(*read.bytes);
    QFile::remove(scriptPath());
    QFile::remove(logPath());
    return text;
}

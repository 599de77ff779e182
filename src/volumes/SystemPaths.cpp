#include "volumes/SystemPaths.h"

#include "volumes/ContentsFolder.h"

#include <QDir>
#include <QFileInfo>
#include <pwd.h>
#include <unistd.h>

namespace {
QString stripTrailingSlash(QString path) {
    while (path.size() > 1 && path.endsWith(QLatin1Char('/')))
        path.chop(1);
    return path;
}
} // namespace

SystemPaths::SystemPaths(const QString &root, const QString &home, const QString &contentsDir)
    : m_root(root.isEmpty() ? QStringLiteral("/")
                            : stripTrailingSlash(QDir::cleanPath(QDir(root).absolutePath()))),
      m_home(stripTrailingSlash(home.isEmpty() ? QDir::homePath() : home)),
      m_contents(contentsDir.isEmpty() ? defaultContentsDir() : contentsDir) {}

QString SystemPaths::system(const QString &absolutePath) const {
    if (!isSandbox())
        return absolutePath;
    return m_root + absolutePath;
}

QString SystemPaths::volumesDir() const {
    const QString volumes = system(QStringLiteral("/Volumes"));
    if (isSandbox() || QFileInfo::exists(volumes))
        return volumes;
    const passwd *pw = ::getpwuid(::getuid());
    const QString user = pw ? QString::fromLocal8Bit(pw->pw_name) : QString();
    for (const QString &candidate :
         {QStringLiteral("/run/media/") + user, QStringLiteral("/media/") + user}) {
        if (QFileInfo(candidate).isDir())
            return candidate;
    }
    return volumes;
}

QStringList SystemPaths::rootEnvironment() const {
    if (!isSandbox())
        return {};
    QStringList dirs;
    for (const char *dir : {"/usr/sbin", "/sbin", "/usr/bin", "/bin"})
        dirs << m_root + QLatin1String(dir);
    // Root's shell never searches the current folder: relative and empty entries go.
    for (const QString &dir :
         qEnvironmentVariable("PATH", QStringLiteral("/usr/bin:/bin")).split(QLatin1Char(':'))) {
        if (dir.startsWith(QLatin1Char('/')))
            dirs << dir;
    }
    return {QStringLiteral("PATH=") + dirs.join(QLatin1Char(':'))};
}

QString SystemPaths::defaultContentsDir() {
    return ContentsFolder::ofThisProgram();
}

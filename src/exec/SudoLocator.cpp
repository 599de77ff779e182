#include "exec/SudoLocator.h"

#include <QDir>
#include <sys/stat.h>
#include <unistd.h>

namespace {
bool isExecutableFile(const QString &path) {
    const QByteArray native = QFile::encodeName(path);
    struct stat info {};
    return ::stat(native.constData(), &info) == 0 && S_ISREG(info.st_mode) &&
           ::access(native.constData(), X_OK) == 0;
}
} // namespace

QString SudoLocator::find(const QString &pathVariable, const QString &fallback) {
    for (const QString &entry : pathVariable.split(QLatin1Char(':'))) {
        if (!entry.startsWith(QLatin1Char('/')))
            continue;
        const QString candidate = QDir::cleanPath(entry + QStringLiteral("/sudo"));
        if (isExecutableFile(candidate))
            return candidate;
    }
    if (fallback.startsWith(QLatin1Char('/')) && isExecutableFile(fallback))
        return fallback;
    return QString();
}

QString SudoLocator::fromEnvironment() {
    return find(qEnvironmentVariable("PATH"));
}

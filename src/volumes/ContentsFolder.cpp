#include "volumes/ContentsFolder.h"

#include <QDir>
#include <QFileInfo>
#include <cstdlib>
#include <memory>
#include <string>

#ifdef __APPLE__
#include <mach-o/dyld.h>
#endif

QString ContentsFolder::forExecutable(const QString &executable, const QString &configHome) {
    const QFileInfo exe(executable);
    const QDir macOS = exe.dir();
    const QString contents = QFileInfo(macOS.path()).path();
    const QString bundle = QFileInfo(contents).path();
    if (!executable.isEmpty() && macOS.dirName() == QLatin1String("MacOS") &&
        QFileInfo(contents).fileName() == QLatin1String("Contents") &&
        bundle.endsWith(QLatin1String(".app")))
        return contents;
    return configHome + QStringLiteral("/kextkeeper");
}

QString ContentsFolder::ofThisProgram() {
    const QString config =
        qEnvironmentVariable("XDG_CONFIG_HOME", QDir::homePath() + QStringLiteral("/.config"));
    return forExecutable(executablePath(), config);
}

QString ContentsFolder::executablePath() {
#if defined(__APPLE__)
    uint32_t size = 0;
    _NSGetExecutablePath(nullptr, &size); // tells the size it needs
    std::string path(size, '\0');
    if (_NSGetExecutablePath(path.data(), &size) != 0)
        return {};
    // The bundle may be reached through a link; its real place holds Contents.
    std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(path.c_str(), nullptr),
                                                         &std::free);
    return resolved ? QString::fromLocal8Bit(resolved.get()) : QString();
#elif defined(__linux__)
    return QFileInfo(QStringLiteral("/proc/self/exe")).canonicalFilePath();
#else
    return {};
#endif
}

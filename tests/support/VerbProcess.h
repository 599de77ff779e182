#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>

// What a verb of the command-line tool printed, and its exit status.
struct VerbResult {
    int status;
    QString out;
    QString err;
};

// `kextkeeper --root ROOT --dry-run ARGS` as a real process, with HOME (and the settings
// below HOME/.config) of the test's own.
inline VerbResult runVerb(const QString &root, const QString &home, const QStringList &args,
                          const QByteArray &input = {}) {
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("HOME"), home);
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/.config"));
    process.setProcessEnvironment(env);
    process.start(QStringLiteral(KK_BINARY),
                  QStringList{QStringLiteral("--root"), root, QStringLiteral("--dry-run")} + args);
    process.write(input);
    process.closeWriteChannel();
    process.waitForFinished(30000);
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

// Writes a property list holding the given dictionary entries, making its folder first.
inline bool writePlist(const QString &path, const QByteArray &entries) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) &&
           file.write(
               "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n" +
               entries + "</dict>\n</plist>\n") > 0;
}

#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>

// One run of the real binary over a sandbox root, with its own home and settings folders so
// that nothing of the machine's user leaks in or out.
struct CliRun {
    int status = -1; // -1: it did not end in time
    QString out;
    QString err;
};

// `kextkeeper --root ROOT ARGS`, with INPUT on its standard input.
inline CliRun runKextKeeper(const QString &root, const QString &home, const QStringList &args,
                            const QByteArray &input = {}) {
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("HOME"), home);
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/.config"));
    env.insert(QStringLiteral("XDG_STATE_HOME"), home + QStringLiteral("/.local/state"));
    process.setProcessEnvironment(env);
    process.start(QStringLiteral(KK_BINARY), QStringList{QStringLiteral("--root"), root} + args);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(30000))
        return {};
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

#pragma once

#include <QProcess>
#include <QStringList>

// One run of the real binary over a sandbox root, with its own home and settings folders so
// that nothing of the machine's user leaks in or out.
struct CliRun {
    int status = -1; // -1: it did not end in time
    QString out;
    QString err;
};

inline CliRun runKextKeeper(const QString &root, const QString &home, const QStringList &args) {
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("HOME"), home);
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home + QStringLiteral("/.config"));
    process.setProcessEnvironment(env);
    process.start(QStringLiteral(KK_BINARY), QStringList{QStringLiteral("--root"), root} + args);
    if (!process.waitForFinished(30000))
        return {};
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

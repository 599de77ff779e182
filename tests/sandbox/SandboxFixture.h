#pragma once

#include "CliRun.h"
#include "exec/Command.h"
#include "sandbox/SandboxBuilder.h"
#include "sandbox/StandInScripts.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

// A fresh sandbox in a folder whose name has a blank, an apostrophe and a non-ASCII
// letter, and a way to run its stand-ins as real processes.
class SandboxFixture {
public:
    ~SandboxFixture() {
        if (m_fixed)
            QDir(m_root).removeRecursively();
    }

    bool create() { return build(m_dir.path() + QStringLiteral("/Mac's sandbox Ü")); }

    // At a root of our choosing, for output whose layout follows the root's length. What
    // an earlier run left there is removed first, and the tree goes with the fixture.
    bool createAt(const QString &root) {
        m_fixed = true;
        QDir(root).removeRecursively();
        return build(root);
    }

    QString root() const { return m_root; }
    QString path(const QString &relative) const { return m_root + relative; }
    QString volume(const QString &name) const {
        return m_root + QStringLiteral("/Volumes/") + name;
    }

    CliRun run(const QString &systemPath, const QStringList &args) const {
        QProcess process;
        process.start(m_root + systemPath, args);
        process.waitForFinished(30000);
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
                QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }

    // The line a stand-in logs for this run: the command as the program renders it.
    QString logLine(const QString &systemPath, const QStringList &args) const {
        return Command{m_root + systemPath, args, true}.toShellLine();
    }

    QStringList logLines() const {
        QFile log(StandInScripts::logPath(m_root));
        if (!log.open(QIODevice::ReadOnly))
            return {};
        return QString::fromUtf8(log.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

    void clearLog() const { QFile::remove(StandInScripts::logPath(m_root)); }

private:
    bool build(const QString &root) {
        m_root = root;
        SandboxBuilder builder(m_root, QStringLiteral(KK_BINARY));
        if (!builder.create()) {
            qWarning() << builder.error();
            return false;
        }
        return true;
    }

    QTemporaryDir m_dir;
    QString m_root;
    bool m_fixed = false;
};

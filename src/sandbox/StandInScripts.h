#pragma once

#include <QString>
#include <QStringList>

// Writes the sandbox's stand-in tools: small POSIX shell scripts at the paths a Mac has
// them. Each appends its own command line to var/log/commands.log below the root, then
// either hands over to our binary or runs the host's own tool (chown and chflags only
// record owners and flags, which nobody but root could set for real).
class StandInScripts {
public:
    // `binary` is the kextkeeper the scripts hand over to.
    StandInScripts(const QString &root, const QString &binary);

    // False with `error()` set when a script could not be written.
    bool writeAll();
    QString error() const { return m_error; }

    static QString logPath(const QString &root) {
        return root + QStringLiteral("/var/log/commands.log");
    }
    // The host tools the scripts pass through to, by their system path.
    static QStringList hostToolPaths();

private:
    bool writeScript(const QString &systemPath, const QByteArray &body);
    QByteArray commonFile() const;
    QByteArray header(const QString &systemPath) const;

    QString m_root;
    QString m_binary;
    QString m_error;
};

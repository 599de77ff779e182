#include "exec/RootScript.h"

#include "exec/AdminAuthentication.h"
#include "exec/Command.h"
#include "exec/ProcessRunner.h"

#include <QFile>
#include <QSaveFile>

RootScript::RootScript(AdminAuthentication &session, const QString &home)
    : m_session(session), m_home(home) {}

QString RootScript::scriptLine(const QString &command, const QString &argument) const {
    QString word = argument;
    word.replace(QLatin1Char('\''), QStringLiteral("'\\''"));
    return command + QStringLiteral(" '") + word + QStringLiteral("' 2> ") + shellQuote(logPath());
}

std::optional<QString> RootScript::run(const QString &command, const QString &argument) {
    {
        QSaveFile script(scriptPath());
        if (script.open(QIODevice::WriteOnly)) {
            script.write(scriptLine(command, argument).toUtf8());
            script.commit();
        }
    }
    if (!m_session.authorizeRootTask())
        return std::nullopt;

    m_session.executeCommandSynced(QStringLiteral("/bin/sh"), {scriptPath()});

    std::optional<QString> text;
    QFile log(logPath());
    if (log.open(QIODevice::ReadOnly))
        text = ProcessRunner::decodeUtf8(log.readAll());
    log.close();
    QFile::remove(scriptPath());
    QFile::remove(logPath());
    return text;
}

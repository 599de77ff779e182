#include "exec/Command.h"

#include <QRegularExpression>
#include <cstring>

QString shellQuote(const QString &word, bool always) {
    static const QRegularExpression safe(QStringLiteral("^[A-Za-z0-9_@%+=:,./-]+$"));
    if (!always && safe.match(word).hasMatch())
        return word;
    QString quoted = word;
    quoted.replace(QLatin1Char('\''), QStringLiteral("'\\''"));
    return QLatin1Char('\'') + quoted + QLatin1Char('\'');
}

QString Command::toShellLine() const {
    QStringList words{shellQuote(tool)};
    for (const QString &arg : args)
        words << shellQuote(arg);
    return words.join(QLatin1Char(' '));
}

char *toString(const Command &command) {
    const QByteArray text =
        ((command.asRoot ? "root: " : "user: ") + command.toShellLine()).toUtf8();
    char *copy = new char[text.size() + 1];
    std::memcpy(copy, text.constData(), text.size() + 1);
    return copy;
}

QString CommandResult::statusText() const {
    if (!launched)
        return QStringLiteral("not started");
    if (exitStatus < 0)
        return QStringLiteral("killed");
    return QStringLiteral("exit %1").arg(exitStatus);
}

#include "exec/FailedCommands.h"

#include "exec/Tr.h"

CommandResult FailedCommands::note(const Command &command, const CommandResult &result) {
    if (!result.ok())
        m_lines << describe(command, result);
    return result;
}

QString FailedCommands::describe(const Command &command, const CommandResult &result) {
    QString line = command.toShellLine() + QStringLiteral(": ") + result.statusText();
    const QString error = result.errorText.simplified();
    if (!error.isEmpty())
        line += QStringLiteral(": ") + error;
    return line;
}

QString FailedCommands::summary(qsizetype count) {
    return count == 1 ? kkTr("1 command failed, see the Log")
                      : kkTr("%1 commands failed, see the Log").arg(count);
}

#include "cli/CliContext.h"

#include "cli/CliArgs.h"
#include "cli/CliHelp.h"

#include <QJsonDocument>
#include <cstdio>
#include <unistd.h>

bool CliContext::confirm(const QString &question) const {
    out << (dryRun ? "# " : "") << question << " [y/N] " << Qt::flush;
    char line[64] = {};
    const bool answered = std::fgets(line, sizeof line, stdin) != nullptr;
    if (answered && (line[0] == 'y' || line[0] == 'Y'))
        return true;
    // A terminal has echoed the answer and its newline; anything else has not.
    if (!answered || !::isatty(STDIN_FILENO))
        out << Qt::endl;
    taskError(QStringLiteral("Nothing was changed."));
    return false;
}

int CliContext::usageError(const QString &problem) const {
    err << "kextkeeper " << verb << ": " << problem << '\n' << CliHelp::tryHelp(verb) << Qt::endl;
    return CliUsage;
}

std::optional<int> CliContext::refuseUnlessOptionsOnly(const CliArgs &args) const {
    if (!args.ok())
        return usageError(args.error());
    if (!args.positional().isEmpty())
        return usageError(QStringLiteral("unexpected words: ") +
                          args.positional().join(QLatin1Char(' ')));
    return std::nullopt;
}

int CliContext::taskError(const QString &message) const {
    err << "kextkeeper " << verb << ": " << message;
    if (!message.endsWith(QLatin1Char('\n')))
        err << '\n';
    err.flush();
    return CliTaskError;
}

void CliContext::printJson(const QJsonObject &document) const {
    out << QJsonDocument(document).toJson(QJsonDocument::Indented) << Qt::flush;
}

void CliContext::note(const QString &text) const {
    for (const QString &line : text.split(QLatin1Char('\n')))
        out << (dryRun ? QStringLiteral("# ") : QString()) << line << Qt::endl;
}

void CliContext::tellFailures(const QString &verb, const QStringList &failures) const {
    err << "kextkeeper " << verb << ": "
        << (failures.size() == 1 ? QStringLiteral("1 command failed:")
                                 : QStringLiteral("%1 commands failed:").arg(failures.size()))
        << Qt::endl;
    for (const QString &line : failures)
        err << "  " << line << Qt::endl;
}

int CliContext::end(const QString &verb, const TaskResult &result) const {
    // The terminal gets the truth in place of the window's kept text.
    if (!result.quietFailure.isEmpty()) {
        err << "kextkeeper " << verb << ": " << result.quietFailure << Qt::endl;
        return CliTaskError;
    }
    if (result.message.isEmpty())
        return result.ok ? CliOk : CliTaskError;
    if (result.ok) {
        note(result.message);
        return CliOk;
    }
    // A tool's own text may end in its line feed already.
    err << "kextkeeper " << verb << ": " << result.message;
    if (!result.message.endsWith(QLatin1Char('\n')))
        err << '\n';
    err.flush();
    return CliTaskError;
}

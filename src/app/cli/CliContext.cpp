#include "cli/CliContext.h"

#include <cstdio>

bool CliContext::confirm(const QString &question) const {
    out << (dryRun ? "# " : "") << question << " [y/N] " << Qt::flush;
    char line[64] = {};
    if (!std::fgets(line, sizeof line, stdin))
        return false;
    return line[0] == 'y' || line[0] == 'Y';
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
    err << result.message;
    if (!result.message.endsWith(QLatin1Char('\n')))
        err << '\n';
    err.flush();
    return CliTaskError;
}

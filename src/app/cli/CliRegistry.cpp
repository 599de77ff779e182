#include "cli/CliRegistry.h"

#include <cstdio>

namespace {
std::map<QString, CliVerb> &table() {
    static std::map<QString, CliVerb> verbs;
    return verbs;
}
} // namespace

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

bool CliRegistry::add(CliVerb verb) {
    const QString name = verb.name;
    table()[name] = std::move(verb);
    return true;
}

const std::map<QString, CliVerb> &CliRegistry::verbs() {
    return table();
}

QString CliRegistry::helpText() {
    QString text = QStringLiteral(
        "Usage: kextkeeper [--root DIR] [--dry-run] [VERB [ARGS...]]\n"
        "Without a verb the window opens.\n\n"
        "Global options:\n"
        "  --root DIR   work on a system root below DIR (a sandbox or a rescued volume)\n"
        "  --dry-run    print the commands that would run as root instead of running them\n"
        "  --help       show this text\n"
        "  --version    show the version\n\nVerbs:\n");
    for (const auto &[name, verb] : table())
        text += QStringLiteral("  %1\n      %2\n").arg(verb.usage, verb.summary);
    return text;
}

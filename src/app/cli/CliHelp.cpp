#include "cli/CliHelp.h"

#include "cli/CliRegistry.h"
#include "cli/CliSyntax.h"

namespace {

const QString globalUsage = QStringLiteral("kextkeeper [--root DIR] [--dry-run]");

// Options in two columns, the second aligned; an option of some actions only says which.
QString optionTable(const QList<CliOption> &options) {
    qsizetype width = 0;
    for (const CliOption &option : options)
        width = std::max(width, CliHelp::optionWithValue(option).size());
    QString text;
    for (const CliOption &option : options) {
        QString help = option.help;
        if (!option.actions.isEmpty())
            help += QStringLiteral(" (%1 only)").arg(option.actions.join(QStringLiteral(" and ")));
        text += QStringLiteral("  %1  %2\n")
                    .arg(CliHelp::optionWithValue(option), -int(width))
                    .arg(help);
    }
    return text;
}

} // namespace

const QList<CliOption> &CliHelp::globalOptions() {
    static const QList<CliOption> options{
        {QStringLiteral("--root"), QStringLiteral("DIR"),
         QStringLiteral("work on a system root below DIR (a sandbox or a rescued volume); "
                        "also --root=DIR"),
         CliValue::Folder},
        {QStringLiteral("--dry-run"), QString(),
         QStringLiteral("print the commands that would run as root instead of running them")},
        {QStringLiteral("--use-sudo"), QString(),
         QStringLiteral("run root commands through sudo even as root or on a --root sandbox")},
        {QStringLiteral("--help"), QString(), QStringLiteral("show this text")},
        {QStringLiteral("--version"), QString(), QStringLiteral("show the version")},
    };
    return options;
}

QString CliHelp::programHelp(const QList<CliVerb> &verbs) {
    QString text = QStringLiteral("Usage: %1 [VERB [ARGS...]]\n"
                                  "Without a verb the window opens.\n\nGlobal options:\n")
                       .arg(globalUsage);
    text += optionTable(globalOptions());
    text += QStringLiteral("\nVerbs:\n");
    for (const CliVerb &verb : verbs)
        text += QStringLiteral("  %1\n      %2\n").arg(verb.usage, verb.summary);
    text += QStringLiteral("\n'kextkeeper VERB --help' tells a verb's options.\n");
    return text;
}

QString CliHelp::verbHelp(const CliVerb &verb) {
    QString text;
    const QStringList lines = usageLines(verb);
    for (qsizetype i = 0; i < lines.size(); ++i)
        text += QStringLiteral("%1 %2 %3\n")
                    .arg(i == 0 ? QStringLiteral("Usage:") : QStringLiteral("      "), globalUsage,
                         lines[i]);
    QString summary = verb.summary;
    if (!summary.isEmpty())
        summary[0] = summary[0].toUpper();
    text += summary + QStringLiteral(".\n\nOptions:\n");
    QList<CliOption> options = CliSyntax::of(verb.name).options;
    options << CliOption{QStringLiteral("--help"), QString(), QStringLiteral("show this text")};
    text += optionTable(options);
    return text;
}

QStringList CliHelp::usageLines(const CliVerb &verb) {
    return verb.usage.split(QStringLiteral(" | "));
}

QString CliHelp::optionWithValue(const CliOption &option) {
    return option.takesValue() ? option.name + QLatin1Char(' ') + option.value : option.name;
}

QString CliHelp::tryHelp(const QString &verb) {
    return verb.isEmpty() ? QStringLiteral("Try 'kextkeeper --help'.")
                          : QStringLiteral("Try 'kextkeeper %1 --help'.").arg(verb);
}

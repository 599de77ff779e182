// `kextkeeper journal`: what ran as root (and what of the user's changed something),
// from the journal in the user's state folder, newest last.

#include "cli/CliArgs.h"
#include "cli/CliSyntax.h"
#include "cli/CliVerbs.h"
#include "exec/CommandJournal.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

// "2011-03-05 14:07:09  exit 1  0.012 s  root  /bin/cp -R A B", then its standard error
// indented below it.
void printEntry(CliContext &c, const JournalEntry &entry) {
    c.out << entry.time.toLocalTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) << "  "
          << entry.statusText() << "  " << QString::number(entry.durationMs / 1000.0, 'f', 3)
          << " s  " << (entry.command.asRoot ? "root" : "user") << "  " << entry.displayLine()
          << '\n';
    const QString error = entry.result.errorText.trimmed();
    if (!error.isEmpty())
        for (const QString &line : error.split(QLatin1Char('\n')))
            c.out << "    " << line << '\n';
}

} // namespace

int journalVerb(CliContext &c) {
    const CliArgs args(c.args, CliSyntax::of(c.verb).options);
    if (const std::optional<int> refused = c.refuseUnlessOptionsOnly(args))
        return *refused;
    qsizetype last = -1;
    if (const std::optional<QString> word = args.value(QStringLiteral("--last"))) {
        bool ok = false;
        last = word->toLongLong(&ok);
        if (!ok || last < 0)
            return c.usageError(QStringLiteral("--last needs a number of entries"));
    }

    const QString path = CommandJournal::defaultPath(c.paths().home());
    // The entries moved aside when the journal grew large come first.
    QList<JournalEntry> entries =
        CommandJournal::readFile(path + QStringLiteral(".1")) + CommandJournal::readFile(path);
    if (args.flag(QStringLiteral("--failed")))
        entries.removeIf([](const JournalEntry &entry) { return !entry.failed(); });
    if (last >= 0 && entries.size() > last)
        entries = entries.mid(entries.size() - last);

    if (args.flag(QStringLiteral("--json"))) {
        QJsonArray list;
        for (const JournalEntry &entry : entries)
            list.append(entry.toJson());
        c.out << QJsonDocument(QJsonObject{{QStringLiteral("journal"), path},
                                           {QStringLiteral("entries"), list}})
                     .toJson(QJsonDocument::Indented);
        return CliOk;
    }
    if (entries.isEmpty())
        c.err << "kextkeeper journal: no entries in " << path << Qt::endl;
    for (const JournalEntry &entry : entries)
        printEntry(c, entry);
    return CliOk;
}

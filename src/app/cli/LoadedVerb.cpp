// `kextkeeper loaded`, `unload`, `reload` and `report`: the loaded kexts page and the
// system report without the window.

#include "cli/CliArgs.h"
#include "cli/CliSyntax.h"
#include "cli/CliVerbs.h"
#include "exec/Command.h"
#include "exec/Executor.h"
#include "exec/ProcessRunner.h"
#include "inspect/ArchitectureProbe.h"
#include "loaded/KextUnloader.h"
#include "loaded/LoadedKextList.h"
#include "loaded/SystemReport.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <memory>

namespace {

// One positional word and no options; the error is printed and empty is returned.
std::optional<QString> onePath(CliContext &c) {
    const CliArgs args(c.args, CliSyntax::of(c.verb).options);
    if (!args.ok() || args.positional().size() != 1) {
        c.usageError(args.ok() ? QStringLiteral("needs exactly one path") : args.error());
        return std::nullopt;
    }
    return CliArgs::absolutePath(args.positional().first());
}

// A row is "identifier (version)"; JSON readers get the two apart.
QJsonObject rowObject(const QString &row) {
    const qsizetype open = row.lastIndexOf(QStringLiteral(" ("));
    if (open < 0 || !row.endsWith(QLatin1Char(')')))
        return {{QStringLiteral("identifier"), row}, {QStringLiteral("version"), QString()}};
    return {{QStringLiteral("identifier"), row.left(open)},
            {QStringLiteral("version"), row.mid(open + 2, row.size() - open - 3)}};
}

} // namespace

int loadedVerb(CliContext &c) {
    const CliArgs args(c.args, CliSyntax::of(c.verb).options);
    if (!args.ok() || !args.positional().isEmpty())
        return c.usageError(args.ok() ? QStringLiteral("unexpected words") : args.error());
    const QString tool = c.paths().system(QStringLiteral("/usr/sbin/kextstat"));
    const std::optional<QString> output = ProcessRunner::output(tool, {});
    if (!output)
        return c.taskError(tool + QStringLiteral(" could not run or printed unreadable text"));
    LoadedKextList list;
    list.refresh(*output);
    const QString filter = args.value(QStringLiteral("--filter")).value_or(QString());
    const QStringList rows = list.filtered(filter);
    if (args.flag(QStringLiteral("--json"))) {
        QJsonArray kexts;
        for (const QString &row : rows)
            kexts.append(rowObject(row));
        c.printJson({{QStringLiteral("filter"), filter},
                     {QStringLiteral("count"), int(rows.size())},
                     {QStringLiteral("kexts"), kexts}});
        return CliOk;
    }
    // Only rows on standard output, so that `| wc -l` counts kexts.
    for (const QString &row : rows)
        c.out << row << '\n';
    c.out.flush();
    c.err << LoadedKextList::foundText(rows.size()) << Qt::endl;
    return CliOk;
}

static int unloadOrReload(CliContext &c, bool reload) {
    const QString verb = reload ? QStringLiteral("reload") : QStringLiteral("unload");
    const std::optional<QString> path = onePath(c);
    if (!path)
        return CliUsage;
    if (!QFileInfo::exists(*path))
        return c.taskError(*path + QStringLiteral(" does not exist"));
    // The window takes a refusal for success (the tool wrote no error); a terminal user
    // must learn that nothing was unloaded.
    if (!c.services.executor()->authorize())
        return c.taskError(QStringLiteral("administrator rights were not given"));
    const KextUnloader unloader([&c](const QString &command, const QString &argument) {
        if (c.dryRun) {
            c.out << Command{command, {argument}, true}.toShellLine() << Qt::endl;
            return std::optional<QString>(QString());
        }
        return c.services.rootScript().run(command, argument);
    });
    const TaskResult result = reload ? unloader.reload(*path) : unloader.unload(*path);
    // Nothing to unload (the path is checked above) is no failure of its own here.
    if (!result.ok && result.message.isEmpty())
        return CliOk;
    return c.end(verb, result);
}

int reportVerb(CliContext &c) {
    const std::optional<QString> path = onePath(c);
    if (!path)
        return CliUsage;
    // A dry run writes nothing, not even the report.
    if (c.dryRun) {
        c.note(QStringLiteral("would write the system report to %1")
                   .arg(QFileInfo(*path).absoluteFilePath()));
        return CliOk;
    }
    KextLocationIndex &shared = c.services.index();
    shared.rebuild(c.paths());
    auto index = std::make_shared<const KextLocationIndex>(shared);
    SystemReport::Sources sources{
        c.paths(), ProcessRunner::output,
        [index](const QString &identifier) { return index->findPath(identifier); },
        [](const QString &kextPath) { return ArchitectureProbe().probeText(kextPath); }};
    const QString file = QFileInfo(*path).absoluteFilePath();
    const TaskResult end = SystemReport::start(std::move(sources), file).get();
    if (!end.ok)
        return c.taskError(end.message);
    if (!end.quietFailure.isEmpty())
        return c.end(QStringLiteral("report"), end);
    c.out << end.message << Qt::endl;
    return CliOk;
}

int unloadVerb(CliContext &c) {
    return unloadOrReload(c, false);
}

int reloadVerb(CliContext &c) {
    return unloadOrReload(c, true);
}

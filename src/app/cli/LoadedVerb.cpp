// `kextkeeper loaded`, `unload`, `reload` and `report`: the loaded kexts page and the
// system report without the window.

#include "cli/CliArgs.h"
#include "cli/CliVerbs.h"
#include "exec/Command.h"
#include "exec/Executor.h"
#include "exec/ProcessRunner.h"
#include "inspect/ArchitectureProbe.h"
#include "loaded/KextUnloader.h"
#include "loaded/LoadedKextList.h"
#include "loaded/SystemReport.h"

#include <QFileInfo>
#include <memory>

namespace {

// One positional word and no options; the error is printed and empty is returned.
std::optional<QString> onePath(CliContext &c, const QString &verb) {
    const CliArgs args(c.args, {}, {});
    if (!args.ok() || args.positional().size() != 1) {
        c.err << "kextkeeper " << verb << ": "
              << (args.ok() ? QStringLiteral("needs exactly one path") : args.error()) << Qt::endl;
        return std::nullopt;
    }
    return CliArgs::absolutePath(args.positional().first());
}

} // namespace

int loadedVerb(CliContext &c) {
    const CliArgs args(c.args, {QStringLiteral("--filter")}, {});
    if (!args.ok() || !args.positional().isEmpty()) {
        c.err << "kextkeeper loaded: "
              << (args.ok() ? QStringLiteral("unexpected words") : args.error()) << Qt::endl;
        return CliUsage;
    }
    const QString tool = c.paths().system(QStringLiteral("/usr/sbin/kextstat"));
    const std::optional<QString> output = ProcessRunner::output(tool, {});
    if (!output) {
        c.err << "kextkeeper loaded: " << tool << " could not run or printed unreadable text"
              << Qt::endl;
        return CliTaskError;
    }
    LoadedKextList list;
    list.refresh(*output);
    const QStringList rows = list.filtered(args.value(QStringLiteral("--filter")).value_or(""));
    for (const QString &row : rows)
        c.out << row << '\n';
    c.out << LoadedKextList::foundText(rows.size()) << Qt::endl;
    return CliOk;
}

static int unloadOrReload(CliContext &c, bool reload) {
    const QString verb = reload ? QStringLiteral("reload") : QStringLiteral("unload");
    const std::optional<QString> path = onePath(c, verb);
    if (!path)
        return CliUsage;
    if (!QFileInfo::exists(*path)) {
        c.err << "kextkeeper " << verb << ": " << *path << " does not exist" << Qt::endl;
        return CliTaskError;
    }
    // The window takes a refusal for success (the tool wrote no error); a terminal user
    // must learn that nothing was unloaded.
    if (!c.services.executor()->authorize()) {
        c.err << "kextkeeper " << verb << ": administrator rights were not given" << Qt::endl;
        return CliTaskError;
    }
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
    const std::optional<QString> path = onePath(c, QStringLiteral("report"));
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
    if (!end.ok) {
        c.err << "kextkeeper report: " << end.message << Qt::endl;
        return CliTaskError;
    }
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

// `kextkeeper mkext list|unpack|build`: our own archive reader and writer. The texts
// are those of the system's archive tools, so this verb can stand in for them where
// they are missing, and the rebuild fallback runs `mkext build` as root.

#include "cli/CliArgs.h"
#include "cli/CliSyntax.h"
#include "cli/CliVerbs.h"
#include "mkext/MkextBuiltinTool.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonObject>

namespace {

// The tool's own texts, each line of its standard error naming the verb like every
// other error of ours (the sandbox's stand-in tools take the name off again).
int finish(CliContext &c, const MkextToolOutput &output) {
    c.out << output.out;
    c.out.flush();
    for (const QString &line : output.err.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        c.err << "kextkeeper mkext: " << line << '\n';
    c.err.flush();
    return output.status == 0 ? CliOk : CliTaskError;
}

int listArchive(CliContext &c, const QStringList &words) {
    const CliArgs args(words, CliSyntax::of(c.verb).options, QStringLiteral("list"));
    if (!args.ok())
        return c.usageError(args.error());
    if (args.positional().size() != 1)
        return c.usageError(QStringLiteral("list needs exactly one mkext file"));
    if (!args.flag(QStringLiteral("--json")))
        return finish(c, MkextBuiltinTool::list(args.positional().first()));
    const MkextBuiltinTool::Listing listing = MkextBuiltinTool::listing(args.positional().first());
    if (!listing.error.isEmpty())
        return c.taskError(listing.error);
    QJsonArray kexts;
    for (const MkextListedKext &kext : listing.kexts)
        kexts.append(QJsonObject{{QStringLiteral("path"), kext.path},
                                 {QStringLiteral("identifier"), kext.identifier},
                                 {QStringLiteral("version"), kext.version}});
    c.printJson({{QStringLiteral("file"), args.positional().first()},
                 {QStringLiteral("count"), int(listing.kexts.size())},
                 {QStringLiteral("kexts"), kexts}});
    return CliOk;
}

int unpackArchive(CliContext &c, const QStringList &words) {
    const CliArgs args(words, CliSyntax::of(c.verb).options, QStringLiteral("unpack"));
    if (!args.ok())
        return c.usageError(args.error());
    if (args.positional().size() != 1)
        return c.usageError(QStringLiteral("unpack needs exactly one mkext file"));
    const QString folder = args.value(QStringLiteral("--to")).value_or(QDir::currentPath());
    const QString arch = args.value(QStringLiteral("--arch")).value_or(QString());
    if (c.dryRun) {
        c.note(QStringLiteral("would unpack %1 into %2").arg(args.positional().first(), folder));
        return CliOk;
    }
    return finish(c, MkextBuiltinTool::unpack(arch, folder, args.positional().first()));
}

int buildArchive(CliContext &c, const QStringList &words) {
    const CliArgs args(words, CliSyntax::of(c.verb).options, QStringLiteral("build"));
    if (!args.ok())
        return c.usageError(args.error());
    if (args.positional().size() < 2)
        return c.usageError(QStringLiteral("build needs the mkext file and a kext folder"));
    const QString archive = args.positional().at(0);
    const QStringList folders = args.positional().mid(1);
    QStringList archs = args.values(QStringLiteral("--arch"));
    if (archs.isEmpty())
        archs = {QStringLiteral("i386"), QStringLiteral("x86_64")};
    if (c.dryRun) {
        c.note(QStringLiteral("would write %1 from %2 for %3")
                   .arg(archive, folders.join(QStringLiteral(", ")),
                        archs.join(QStringLiteral(", "))));
        return CliOk;
    }
    return finish(c, MkextBuiltinTool::build(archive, folders, archs));
}

} // namespace

int mkextVerb(CliContext &c) {
    if (c.args.isEmpty())
        return c.usageError(QStringLiteral("needs list, unpack or build"));
    const QString action = c.args.first();
    const QStringList rest = c.args.mid(1);
    if (action == QLatin1String("list"))
        return listArchive(c, rest);
    if (action == QLatin1String("unpack"))
        return unpackArchive(c, rest);
    if (action == QLatin1String("build"))
        return buildArchive(c, rest);
    return c.usageError(QStringLiteral("unknown action %1").arg(action));
}

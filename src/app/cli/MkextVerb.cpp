// `kextkeeper mkext list|unpack|build`: our own archive reader and writer. The texts
// are those of the system's archive tools, so this verb can stand in for them where
// they are missing, and the rebuild fallback runs `mkext build` as root.

#include "cli/CliArgs.h"
#include "cli/CliVerbs.h"
#include "mkext/MkextBuiltinTool.h"

#include <QDir>

namespace {

int usage(CliContext &c, const QString &problem) {
    c.err << "kextkeeper mkext: " << problem << Qt::endl;
    return CliUsage;
}

int finish(CliContext &c, const MkextToolOutput &output) {
    c.out << output.out;
    c.out.flush();
    c.err << output.err;
    c.err.flush();
    return output.status == 0 ? CliOk : CliTaskError;
}

int listArchive(CliContext &c, const QStringList &words) {
    const CliArgs args(words, {}, {});
    if (!args.ok())
        return usage(c, args.error());
    if (args.positional().size() != 1)
        return usage(c, QStringLiteral("list needs exactly one mkext file"));
    return finish(c, MkextBuiltinTool::list(args.positional().first()));
}

int unpackArchive(CliContext &c, const QStringList &words) {
    const CliArgs args(words, {QStringLiteral("--arch"), QStringLiteral("--to")}, {});
    if (!args.ok())
        return usage(c, args.error());
    if (args.positional().size() != 1)
        return usage(c, QStringLiteral("unpack needs exactly one mkext file"));
    const QString folder = args.value(QStringLiteral("--to")).value_or(QDir::currentPath());
    const QString arch = args.value(QStringLiteral("--arch")).value_or(QString());
    if (c.dryRun) {
        c.note(QStringLiteral("would unpack %1 into %2").arg(args.positional().first(), folder));
        return CliOk;
    }
    return finish(c, MkextBuiltinTool::unpack(arch, folder, args.positional().first()));
}

int buildArchive(CliContext &c, const QStringList &words) {
    const CliArgs args(words, {QStringLiteral("--arch")}, {});
    if (!args.ok())
        return usage(c, args.error());
    if (args.positional().size() < 2)
        return usage(c, QStringLiteral("build needs the mkext file and a kext folder"));
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
        return usage(c, QStringLiteral("needs list, unpack or build"));
    const QString action = c.args.first();
    const QStringList rest = c.args.mid(1);
    if (action == QLatin1String("list"))
        return listArchive(c, rest);
    if (action == QLatin1String("unpack"))
        return unpackArchive(c, rest);
    if (action == QLatin1String("build"))
        return buildArchive(c, rest);
    return usage(c, QStringLiteral("unknown action %1").arg(action));
}

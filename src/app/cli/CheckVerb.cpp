// `kextkeeper check KEXT [--deps]` and `kextkeeper load KEXT`: the check page without the
// window.

#include "cli/CliArgs.h"
#include "cli/CliSyntax.h"
#include "cli/CliVerbs.h"
#include "inspect/ArchitectureProbe.h"
#include "inspect/DependencyListing.h"
#include "inspect/KextTestLoad.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

namespace {

// The one kext path of the verb, or the usage error printed and nothing returned.
std::optional<QString> kextArgument(CliContext &c, const CliArgs &args) {
    if (!args.ok() || args.positional().size() != 1) {
        c.usageError(args.ok() ? QStringLiteral("needs exactly one kext") : args.error());
        return std::nullopt;
    }
    return CliArgs::absolutePath(args.positional().first());
}

} // namespace

int checkVerb(CliContext &c) {
    const CliArgs args(c.args, CliSyntax::of(c.verb).options);
    const std::optional<QString> kext = kextArgument(c, args);
    if (!kext)
        return CliUsage;
    if (!QFileInfo::exists(*kext))
        return c.taskError(*kext + QStringLiteral(" does not exist"));
    const ArchitectureProbe::Architectures found =
        ArchitectureProbe::checkPageMarkers(ArchitectureProbe().probeText(*kext));
    const QList<QPair<const char *, bool>> marks{
        {"x86_64", found.x86_64}, {"i386", found.i386}, {"ppc", found.ppc}, {"ppc64", found.ppc64}};
    const bool deps = args.flag(QStringLiteral("--deps"));
    const QString libraries = deps ? DependencyListing::run(c.paths(), *kext) : QString();
    if (args.flag(QStringLiteral("--json"))) {
        QJsonObject architectures;
        for (const auto &[name, present] : marks)
            architectures.insert(QLatin1String(name), present);
        QJsonObject document{{QStringLiteral("kext"), *kext},
                             {QStringLiteral("architectures"), architectures}};
        if (deps) {
            QJsonArray lines;
            for (const QString &line : libraries.split('\n', Qt::SkipEmptyParts))
                lines.append(line.trimmed());
            document.insert(QStringLiteral("libraries"), lines);
        }
        c.printJson(document);
        return CliOk;
    }
    for (const auto &[name, present] : marks)
        c.out << name << ": " << (present ? "yes" : "no") << '\n';
    c.out << libraries;
    c.out.flush();
    return CliOk;
}

int loadVerb(CliContext &c) {
    const CliArgs args(c.args, CliSyntax::of(c.verb).options);
    const std::optional<QString> kext = kextArgument(c, args);
    if (!kext)
        return CliUsage;
    if (!QFileInfo::exists(*kext))
        return c.taskError(*kext + QStringLiteral(" does not exist"));
    // A dry run must not remember the folder either: its index has no settings file.
    KextLocationIndex scratch{QString()};
    KextLocationIndex &index = c.dryRun ? scratch : c.services.index();
    const std::shared_ptr<Executor> executor = c.services.executor();
    const KextTestLoad load(
        c.paths(), *executor, index, [&c](const QString &command, const QString &argument) {
            if (c.dryRun) {
                c.out << Command{command, {argument}, true}.toShellLine() << Qt::endl;
                return std::optional<QString>(QString());
            }
            return c.services.rootScript().run(command, argument);
        });
    const TaskResult result = load.run(*kext);
    if (!result.ok && result.message.isEmpty())
        return c.taskError(QStringLiteral("not authorized"));
    return c.end(QStringLiteral("load"), result);
}

// `kextkeeper check KEXT [--deps]` and `kextkeeper load KEXT`: the check page without the
// window.

#include "cli/CliArgs.h"
#include "cli/CliVerbs.h"
#include "inspect/ArchitectureProbe.h"
#include "inspect/DependencyListing.h"
#include "inspect/KextTestLoad.h"

#include <QFileInfo>

namespace {

// The one kext path of the verb, or the usage error printed and nothing returned.
std::optional<QString> kextArgument(CliContext &c, const CliArgs &args, const QString &verb) {
    if (!args.ok() || args.positional().size() != 1) {
        c.err << "kextkeeper " << verb << ": "
              << (args.ok() ? QStringLiteral("needs exactly one kext") : args.error()) << Qt::endl;
        return std::nullopt;
    }
    return CliArgs::absolutePath(args.positional().first());
}

} // namespace

int checkVerb(CliContext &c) {
    const CliArgs args(c.args, {}, {QStringLiteral("--deps")});
    const std::optional<QString> kext = kextArgument(c, args, QStringLiteral("check"));
    if (!kext)
        return CliUsage;
    if (!QFileInfo::exists(*kext)) {
        c.err << "kextkeeper check: " << *kext << " does not exist" << Qt::endl;
        return CliTaskError;
    }
    const ArchitectureProbe::Architectures found =
        ArchitectureProbe::checkPageMarkers(ArchitectureProbe().probeText(*kext));
    const auto line = [&c](const char *name, bool present) {
        c.out << name << ": " << (present ? "yes" : "no") << '\n';
    };
    line("x86_64", found.x86_64);
    line("i386", found.i386);
    line("ppc", found.ppc);
    line("ppc64", found.ppc64);
    if (args.flag(QStringLiteral("--deps")))
        c.out << DependencyListing::run(c.paths(), *kext);
    c.out.flush();
    return CliOk;
}

int loadVerb(CliContext &c) {
    const CliArgs args(c.args, {}, {});
    const std::optional<QString> kext = kextArgument(c, args, QStringLiteral("load"));
    if (!kext)
        return CliUsage;
    if (!QFileInfo::exists(*kext)) {
        c.err << "kextkeeper load: " << *kext << " does not exist" << Qt::endl;
        return CliTaskError;
    }
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
        c.err << "kextkeeper load: not authorized" << Qt::endl;
    return c.end(QStringLiteral("load"), result);
}

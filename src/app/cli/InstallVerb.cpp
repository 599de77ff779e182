// `kextkeeper install`: the installation page's plan from the terminal, with progress
// and the final text on the terminal's own streams.

#include "AppSettings.h"
#include "cli/CliArgs.h"
#include "cli/CliSyntax.h"
#include "cli/CliVerbs.h"
#include "cli/TerminalInstallView.h"
#include "install/InstallList.h"
#include "install/InstallPlan.h"
#include "volumes/VolumeList.h"

#include <QFileInfo>

namespace {

bool isBundleType(const QString &path) {
    const QString name = InstallList::bundleName(path);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot > 0 && InstallList::bundleTypes().contains(name.mid(dot + 1), Qt::CaseInsensitive);
}

} // namespace

int installVerb(CliContext &c) {
    const CliArgs args(c.args, CliSyntax::of(c.verb).options);
    if (!args.ok())
        return c.usageError(args.error());
    InstallOptions options;
    const QString to = args.value(QStringLiteral("--to")).value_or(QString());
    options.toExtra = to == QLatin1String("extra");
    options.toSle = to == QLatin1String("sle");
    options.toDesktop = to == QLatin1String("desktop");
    if (!options.toExtra && !options.toSle && !options.toDesktop)
        return c.usageError(QStringLiteral("--to must be extra, sle or desktop"));
    options.volume = args.value(QStringLiteral("--volume")).value_or(QString());
    if (options.volume.isEmpty() && !options.toDesktop)
        return c.usageError(QStringLiteral("--volume NAME is needed for extra and sle"));
    options.extraVersion = args.value(QStringLiteral("--extra-version")).value_or(QString());
    options.backup = args.flag(QStringLiteral("--backup"));
    const AppSettings settings(c.paths().contentsDir());
    options.prelinkKernel = settings.boolean(AppSettings::prelinkKernelKey);
    options.recreateLionCache = settings.boolean(AppSettings::lionCacheKey);

    for (const QString &word : args.positional()) {
        const QString bundle = CliArgs::absolutePath(word);
        if (!isBundleType(bundle))
            return c.usageError(QStringLiteral("not a kext, bundle, plugin or ppp: ") + word);
        // The old copy is removed before the new one is copied: a bundle that isn't
        // there would leave the destination without either.
        if (!QFileInfo(bundle).isDir())
            return c.taskError(QStringLiteral("no such bundle: ") + word);
        options.bundles << bundle;
    }
    // Only a volume the page would offer: a name such as "../../outside" would put the
    // copies anywhere.
    if (!options.toDesktop && !VolumeList::build(c.paths().volumesDir()).contains(options.volume))
        return c.taskError(
            QStringLiteral("no volume with an Extra or System/Library folder is called ") +
            options.volume);

    TerminalInstallView view(c, QStringLiteral("install"));
    const std::shared_ptr<Executor> executor = c.services.executor();
    InstallPlan plan(options, c.services, *executor, view);
    if (const std::optional<TaskResult> refused = plan.prepare()) {
        if (refused->message.isEmpty())
            return c.taskError(
                QStringLiteral("the administrator did not authorize the installation"));
        return c.end(QStringLiteral("install"), *refused);
    }
    const int status = c.end(QStringLiteral("install"), plan.run());
    return view.failed ? CliTaskError : status;
}

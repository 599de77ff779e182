// `kextkeeper maintain`: the maintenance page's job from the terminal. The status lines
// and the closing text go to the terminal; Prelink Kernel and the Lion key come from the
// same settings the window uses.

#include "AppSettings.h"
#include "cli/CliArgs.h"
#include "cli/CliSyntax.h"
#include "cli/CliVerbs.h"
#include "cli/OfferedOptions.h"
#include "cli/TerminalMaintenanceView.h"
#include "maintenance/MaintenancePlan.h"
#include "volumes/VolumeList.h"

namespace {

Qt::CheckState box(const CliArgs &args, const char *flag) {
    return args.flag(QLatin1String(flag)) ? Qt::Checked : Qt::Unchecked;
}

} // namespace

int maintainVerb(CliContext &c) {
    const CliArgs args(c.args, CliSyntax::of(c.verb).options);
    if (const std::optional<int> refused = c.refuseUnlessOptionsOnly(args))
        return *refused;
    MaintenanceOptions options;
    options.volume = args.value(QStringLiteral("--volume")).value_or(QString());
    if (options.volume.isEmpty())
        return c.usageError(QStringLiteral("--volume NAME is needed"));
    options.extraVersion = args.value(QStringLiteral("--extra-version")).value_or(QString());
    // Only the volumes the window would offer: anything else would have every command
    // run on folders that aren't there.
    if (!VolumeList::build(c.paths().volumesDir()).contains(options.volume))
        return c.taskError(
            QStringLiteral("no volume with an Extra or System/Library folder is called ") +
            options.volume);
    // A box the page disables on this volume can't be ticked there; nothing may run.
    const QString rp = c.paths().volumeRoot(options.volume);
    if (const QString refusal = OfferedOptions::version(options.volume, rp, options.extraVersion);
        !refusal.isEmpty())
        return c.usageError(refusal);
    for (const char *flag : {"--repair-extra", "--rebuild-extra-mkext"}) {
        const QString refusal =
            OfferedOptions::extra(flag, options.volume, rp, options.extraVersion);
        if (args.flag(QLatin1String(flag)) && !refusal.isEmpty())
            return c.usageError(refusal);
    }
    for (const char *flag : {"--repair-sle", "--rebuild-caches"}) {
        const QString refusal = OfferedOptions::sle(flag, options.volume, rp);
        if (args.flag(QLatin1String(flag)) && !refusal.isEmpty())
            return c.usageError(refusal);
    }
    options.repairExtra = box(args, "--repair-extra");
    options.rebuildExtraMkext = box(args, "--rebuild-extra-mkext");
    options.repairSle = box(args, "--repair-sle");
    options.rebuildCaches = box(args, "--rebuild-caches");
    const AppSettings settings(c.paths().contentsDir());
    options.prelinkKernel = settings.boolean(AppSettings::prelinkKernelKey);
    options.recreateLionCache = settings.boolean(AppSettings::lionCacheKey);

    TerminalMaintenanceView view(c, QStringLiteral("maintain"));
    const std::shared_ptr<Executor> executor = c.services.executor();
    MaintenancePlan plan(options, c.services, *executor, view);
    if (const std::optional<TaskResult> refused = plan.prepare()) {
        if (!refused->message.isEmpty()) // no task chosen
            return c.usageError(refused->message);
        return c.taskError(QStringLiteral("administrator rights were not given"));
    }
    const int status = c.end(QStringLiteral("maintain"), plan.run());
    return view.failed ? CliTaskError : status;
}

// `kextkeeper doctor`: every check of the Volume Health window on the terminal, one line
// per finding and a summary, or one JSON document; with --fix the maintenance tasks the
// findings name run after the same question and authorization as in the window, and the
// duplicate copies go to the backups only when --yes says so.

#include "AppSettings.h"
#include "DoctorSetup.h"
#include "cli/CliArgs.h"
#include "cli/CliSyntax.h"
#include "cli/CliVerbs.h"
#include "cli/OfferedOptions.h"
#include "cli/TerminalMaintenanceView.h"
#include "doctor/DoctorFixes.h"
#include "doctor/DoctorReport.h"
#include "doctor/KextRemoval.h"
#include "exec/Executor.h"
#include "maintenance/MaintenancePlan.h"
#include "volumes/KextFolders.h"
#include "volumes/VolumeList.h"

#include <QDateTime>

namespace {

struct Request {
    QString volume;
    QString extraVersion;
    bool json = false;
    bool yes = false;
};

KextDoctor::Result examine(CliContext &c, const Request &request) {
    return KextDoctor::run(DoctorSetup::options(c.paths(), request.volume, request.extraVersion));
}

void print(CliContext &c, const Request &request, const KextDoctor::Result &result) {
    if (request.json) {
        c.out << QString::fromUtf8(DoctorReport::json(result, request.volume, request.extraVersion))
              << Qt::flush;
        return;
    }
    // Under --dry-run the findings read as comments between the commands.
    for (const DoctorFinding &finding : result.findings)
        c.note(DoctorReport::line(finding));
    c.note(DoctorReport::summary(result, request.volume));
}

// Fix progress goes where it doesn't spoil a JSON document.
void say(CliContext &c, const Request &request, const QString &text) {
    if (request.json)
        c.err << text << Qt::endl;
    else
        c.note(text);
}

// Moves each losing duplicate to this run's backups; only ever with --yes.
bool removeCopies(CliContext &c, const Request &request, const DoctorFindings &findings) {
    const QStringList copies = DoctorFixes::removals(findings);
    if (copies.isEmpty())
        return false;
    if (!request.yes) {
        for (const QString &copy : copies)
            say(c, request, QStringLiteral("Not removed without --yes: ") + copy);
        return false;
    }
    const std::shared_ptr<Executor> executor = c.services.executor();
    if (!executor->authorize())
        return false;
    KextRemoval removal(c.paths(), *executor, request.volume, request.extraVersion,
                        QDateTime::currentDateTime());
    for (const QString &copy : copies) {
        const QString problem = removal.remove(copy);
        if (problem.isEmpty())
            say(c, request,
                c.dryRun
                    ? QStringLiteral("Would remove %1 (after a backup in Kext Backups)").arg(copy)
                    : QStringLiteral("Removed %1 (kept in Kext Backups)").arg(copy));
        else
            c.err << problem << Qt::endl;
    }
    return true;
}

// The maintenance tasks the findings name: false when authorization was refused.
bool maintain(CliContext &c, const Request &request, const DoctorFindings &findings) {
    MaintenanceOptions options =
        DoctorFixes::maintenance(findings, request.volume, request.extraVersion);
    if (!DoctorFixes::anyMaintenance(options))
        return true;
    const QString tasks = DoctorFixes::taskNames(options).join(QStringLiteral(", "));
    say(c, request, QStringLiteral("Maintenance of %1: %2").arg(request.volume, tasks));
    if (!request.yes &&
        !c.confirm(QStringLiteral("Continue on the volume \"%1\"?").arg(request.volume)))
        return false; // the question has said that nothing was changed
    const AppSettings settings(c.paths().contentsDir());
    options.prelinkKernel = settings.boolean(AppSettings::prelinkKernelKey);
    options.recreateLionCache = settings.boolean(AppSettings::lionCacheKey);
    TerminalMaintenanceView view(c, QStringLiteral("doctor"));
    const std::shared_ptr<Executor> executor = c.services.executor();
    MaintenancePlan plan(options, c.services, *executor, view);
    if (plan.prepare()) {
        c.err << "kextkeeper doctor: administrator rights were not given" << Qt::endl;
        return false;
    }
    c.end(QStringLiteral("doctor"), plan.run());
    return true;
}

} // namespace

int doctorVerb(CliContext &c) {
    const CliArgs args(c.args, CliSyntax::of(c.verb).options);
    if (const std::optional<int> refused = c.refuseUnlessOptionsOnly(args))
        return *refused;
    Request request;
    request.volume = args.value(QStringLiteral("--volume")).value_or(QString());
    request.extraVersion = args.value(QStringLiteral("--extra-version")).value_or(QString());
    request.json = args.flag(QStringLiteral("--json"));
    request.yes = args.flag(QStringLiteral("--yes"));
    if (request.volume.isEmpty())
        return c.usageError(QStringLiteral("--volume NAME is needed"));
    if (!request.extraVersion.isEmpty() && !KextFolders::versions().contains(request.extraVersion))
        return c.usageError(QStringLiteral("--extra-version must be one of ") +
                            KextFolders::versions().join(QStringLiteral(", ")));
    if (!VolumeList::build(c.paths().volumesDir()).contains(request.volume)) {
        c.err << "kextkeeper doctor: no volume with an Extra or System/Library folder is called "
              << request.volume << Qt::endl;
        return CliTaskError;
    }
    if (const QString refusal = OfferedOptions::version(
            request.volume, c.paths().volumeRoot(request.volume), request.extraVersion);
        !refusal.isEmpty())
        return c.usageError(refusal);

    KextDoctor::Result result = examine(c, request);
    if (!args.flag(QStringLiteral("--fix"))) {
        print(c, request, result);
        return result.count(DoctorFinding::Severity::Error) > 0 ? CliTaskError : CliOk;
    }
    if (!request.json)
        print(c, request, result);
    // Removals first: a folder that loses a kext needs its archive rebuilt afterwards.
    if (removeCopies(c, request, result.findings) && !c.dryRun)
        result = examine(c, request);
    if (!maintain(c, request, result.findings))
        return CliTaskError;
    // A dry run changed nothing: the findings above still stand.
    if (c.dryRun)
        return result.count(DoctorFinding::Severity::Error) > 0 ? CliTaskError : CliOk;
    result = examine(c, request);
    if (!request.json)
        c.note(QStringLiteral("After the fixes:"));
    print(c, request, result);
    return result.count(DoctorFinding::Severity::Error) > 0 ? CliTaskError : CliOk;
}

// `kextkeeper restore`: lists the backups installations left on the desktop, and puts
// one back where its kexts came from, as an installation with backups of its own.

#include "AppSettings.h"
#include "cli/CliArgs.h"
#include "cli/CliSyntax.h"
#include "cli/CliVerbs.h"
#include "cli/TerminalInstallView.h"
#include "install/BackupRestore.h"
#include "install/InstallPlan.h"

namespace {

// "05-03 14_07_09  2011-03-05 14:07  Macintosh HD  Extra/Extensions  A.kext, B.kext"
void listBackups(CliContext &c) {
    const QList<BackupRestore::Backup> backups = BackupRestore::list(c.paths().desktop());
    if (backups.isEmpty())
        c.err << "kextkeeper restore: no backups in " << c.paths().desktop() << "/Kext Backups"
              << Qt::endl;
    for (const BackupRestore::Backup &backup : backups) {
        c.out << backup.name() << "  ";
        if (!backup.manifest) {
            c.out << "(no note of where its kexts came from)\n";
            continue;
        }
        QStringList names;
        QString from;
        for (const BackupManifest::Bundle &bundle : backup.manifest->bundles) {
            names << bundle.name;
            from = bundle.removedFrom;
        }
        c.out << backup.manifest->date.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) << "  "
              << backup.manifest->volume << "  " << from << "  " << names.join(QStringLiteral(", "))
              << '\n';
    }
}

} // namespace

int restoreVerb(CliContext &c) {
    const CliArgs args(c.args, CliSyntax::of(c.verb).options);
    if (!args.ok())
        return c.usageError(args.error());
    if (args.flag(QStringLiteral("--list"))) {
        if (!args.positional().isEmpty())
            return c.usageError(QStringLiteral("--list takes no folder"));
        listBackups(c);
        return CliOk;
    }
    if (args.positional().size() != 1)
        return c.usageError(QStringLiteral("needs --list or one backup folder"));
    const QString word = args.positional().first();
    const std::optional<BackupRestore::Backup> backup =
        BackupRestore::find(c.paths().desktop(), word);
    if (!backup) {
        c.err << "kextkeeper restore: no backup folder " << word << Qt::endl;
        return CliTaskError;
    }
    const AppSettings settings(c.paths().contentsDir());
    BackupRestore::Plan plan =
        BackupRestore::plan(*backup, c.paths(), settings.boolean(AppSettings::prelinkKernelKey));
    plan.options.recreateLionCache = settings.boolean(AppSettings::lionCacheKey);
    if (!plan.problem.isEmpty()) {
        c.err << "kextkeeper restore: " << plan.problem << Qt::endl;
        return CliTaskError;
    }
    if (!args.flag(QStringLiteral("--yes"))) {
        c.note(QStringLiteral("Put back %1 into %2? What they replace is backed up first.")
                   .arg(plan.options.bundles.size() == 1
                            ? QStringLiteral("1 kext")
                            : QStringLiteral("%1 kexts").arg(plan.options.bundles.size()),
                        plan.folder));
        const QString question =
            plan.options.volume.isEmpty()
                ? QStringLiteral("Continue?")
                : QStringLiteral("Continue on the volume \"%1\"?").arg(plan.options.volume);
        if (!c.confirm(question))
            return CliTaskError;
    }
    TerminalInstallView view(c, QStringLiteral("restore"));
    const std::shared_ptr<Executor> executor = c.services.executor();
    InstallPlan install(plan.options, c.services, *executor, view);
    if (const std::optional<TaskResult> refused = install.prepare()) {
        if (refused->message.isEmpty())
            c.err << "kextkeeper restore: administrator rights were not given" << Qt::endl;
        return c.end(QStringLiteral("restore"), *refused);
    }
    const int status = c.end(QStringLiteral("restore"), install.run());
    return view.failed ? CliTaskError : status;
}

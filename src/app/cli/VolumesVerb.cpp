// `kextkeeper volumes`: the volumes the window would offer, in the same order, with the
// started system marked and whether each holds S/L/E and kexts in Extra.

#include "cli/CliArgs.h"
#include "cli/CliVerbs.h"
#include "cli/OfferedOptions.h"
#include "volumes/KextFolders.h"
#include "volumes/VolumeList.h"

namespace {

QString yesNo(bool value) {
    return value ? QStringLiteral("yes") : QStringLiteral("no");
}

} // namespace

int volumesVerb(CliContext &c) {
    const CliArgs args(c.args, {QStringLiteral("--extra-version")}, {});
    if (!args.ok() || !args.positional().isEmpty()) {
        c.err << "kextkeeper volumes: "
              << (args.ok() ? QStringLiteral("unexpected words") : args.error()) << Qt::endl;
        return CliUsage;
    }
    const QString version = args.value(QStringLiteral("--extra-version")).value_or(QString());
    if (!version.isEmpty() && !KextFolders::versions().contains(version)) {
        c.err << "kextkeeper volumes: --extra-version must be one of "
              << KextFolders::versions().join(QStringLiteral(", ")) << Qt::endl;
        return CliUsage;
    }
    const QStringList volumes = VolumeList::build(c.paths().volumesDir());
    // The version menu offers a version only on a volume that has its folder.
    if (!version.isEmpty() &&
        std::all_of(volumes.begin(), volumes.end(), [&](const QString &title) {
            return !OfferedOptions::version(title, c.paths().volumeRoot(title), version).isEmpty();
        })) {
        c.err << "kextkeeper volumes: --extra-version " << version << ": no volume has Extra/"
              << version << Qt::endl;
        return CliUsage;
    }
    for (const QString &title : volumes) {
        const QString rp = c.paths().volumeRoot(title);
        const bool started = c.services.isStartedSystem(rp);
        c.out << title << '\t' << (started ? "started system" : "-") << '\t'
              << "S/L/E: " << yesNo(KextFolders(rp).slePresent()) << '\t'
              << "Extra: " << yesNo(KextFolders(rp, version).extraPresent()) << '\n';
    }
    return CliOk;
}

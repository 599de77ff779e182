// `kextkeeper volumes`: the volumes the window would offer, in the same order, with the
// started system marked and whether each holds S/L/E and kexts in Extra.

#include "cli/CliArgs.h"
#include "cli/CliSyntax.h"
#include "cli/CliVerbs.h"
#include "cli/OfferedOptions.h"
#include "volumes/KextFolders.h"
#include "volumes/VolumeList.h"

#include <QJsonArray>
#include <QJsonObject>

namespace {

QString yesNo(bool value) {
    return value ? QStringLiteral("yes") : QStringLiteral("no");
}

} // namespace

int volumesVerb(CliContext &c) {
    const CliArgs args(c.args, CliSyntax::of(c.verb).options);
    if (!args.ok() || !args.positional().isEmpty())
        return c.usageError(args.ok() ? QStringLiteral("unexpected words") : args.error());
    const QString version = args.value(QStringLiteral("--extra-version")).value_or(QString());
    const QStringList volumes = VolumeList::build(c.paths().volumesDir());
    // The version menu offers a version only on a volume that has its folder.
    if (!version.isEmpty() &&
        std::all_of(volumes.begin(), volumes.end(), [&](const QString &title) {
            return !OfferedOptions::version(title, c.paths().volumeRoot(title), version).isEmpty();
        }))
        return c.usageError(
            QStringLiteral("--extra-version %1: no volume has Extra/%1").arg(version));
    const bool json = args.flag(QStringLiteral("--json"));
    QJsonArray rows;
    for (const QString &title : volumes) {
        const QString rp = c.paths().volumeRoot(title);
        const bool started = c.services.isStartedSystem(rp);
        const bool sle = KextFolders(rp).slePresent();
        const bool extra = KextFolders(rp, version).extraPresent();
        if (json) {
            rows.append(QJsonObject{{QStringLiteral("name"), title},
                                    {QStringLiteral("path"), rp},
                                    {QStringLiteral("startedSystem"), started},
                                    {QStringLiteral("sle"), sle},
                                    {QStringLiteral("extra"), extra}});
            continue;
        }
        c.out << title << '\t' << (started ? "started system" : "-") << '\t'
              << "S/L/E: " << yesNo(sle) << '\t' << "Extra: " << yesNo(extra) << '\n';
    }
    if (json)
        c.printJson({{QStringLiteral("extraVersion"),
                      version.isEmpty() ? QJsonValue() : QJsonValue(version)},
                     {QStringLiteral("volumes"), rows}});
    return CliOk;
}

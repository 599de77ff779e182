#include "cli/CliRegistry.h"

#include "cli/CliHelp.h"
#include "cli/CliVerbs.h"

const QList<CliVerb> &CliRegistry::verbs() {
    static const QList<CliVerb> table{
        {QStringLiteral("check"), QStringLiteral("check KEXT [--deps] [--json]"),
         QStringLiteral("tell a kext's architectures (and, with --deps, its libraries)"),
         checkVerb},
        {QStringLiteral("doctor"),
         QStringLiteral("doctor --volume NAME [--extra-version 10.4|10.5|10.6|10.7] [--json] "
                        "[--fix] [--yes]"),
         QStringLiteral("find why a volume's kexts won't load and say which task fixes it; --fix "
                        "runs the maintenance tasks, --yes also moves duplicates to the backups"),
         doctorVerb},
        {QStringLiteral("extra"),
         QStringLiteral("extra to-kextstore|to-extensions|hide|show --volume NAME [--yes]"),
         QStringLiteral("move Extra/Extensions into KextStore (building the mkext) or back, or "
                        "hide or show the Extra folder"),
         extraVerb},
        {QStringLiteral("install"),
         QStringLiteral("install [--volume NAME] --to extra|sle|desktop [--backup] "
                        "[--extra-version 10.4|10.5|10.6|10.7] BUNDLE..."),
         QStringLiteral("install kext bundles into a volume's Extra folder or S/L/E, or pack "
                        "them into Extensions.mkext on the desktop"),
         installVerb},
        {QStringLiteral("journal"), QStringLiteral("journal [--last N] [--failed] [--json]"),
         QStringLiteral("show the journal of the commands run as root: time, exit status, "
                        "duration, command and its error text"),
         journalVerb},
        {QStringLiteral("load"), QStringLiteral("load KEXT"),
         QStringLiteral("test-load a kext into the running kernel (as root)"), loadVerb},
        {QStringLiteral("loaded"), QStringLiteral("loaded [--filter TEXT] [--json]"),
         QStringLiteral("list the loaded kexts (bundle identifier and version), optionally only "
                        "those containing TEXT in any case"),
         loadedVerb},
        {QStringLiteral("maintain"),
         QStringLiteral("maintain --volume NAME [--extra-version 10.4|10.5|10.6|10.7] "
                        "[--repair-extra] [--rebuild-extra-mkext] [--repair-sle] "
                        "[--rebuild-caches]"),
         QStringLiteral("repair kext folder permissions and rebuild the Extra mkext and the "
                        "system's kext caches"),
         maintainVerb},
        {QStringLiteral("mkext"),
         QStringLiteral("mkext list FILE [--json] | mkext unpack FILE [--arch A] [--to DIR] | "
                        "mkext build OUT FOLDER... [--arch A]..."),
         QStringLiteral("list, unpack or build an mkext archive without Apple's tools "
                        "(build: i386 and x86_64 unless --arch is given)"),
         mkextVerb},
        {QStringLiteral("reload"), QStringLiteral("reload KEXT"),
         QStringLiteral("unload the kext at path KEXT and load it again, as root"), reloadVerb},
        {QStringLiteral("report"), QStringLiteral("report FILE"),
         QStringLiteral("write the system report (software, hardware, Extra kexts, loaded "
                        "kexts) to FILE"),
         reportVerb},
        {QStringLiteral("restore"), QStringLiteral("restore --list | restore FOLDER [--yes]"),
         QStringLiteral("list the backups installations made, or put the kexts of one back "
                        "where they came from (backing up what they replace)"),
         restoreVerb},
        {QStringLiteral("sandbox"), QStringLiteral("sandbox create DIR"),
         QStringLiteral("make a simulated Mac in DIR to try the program on with --root DIR"),
         sandboxVerb},
        {QStringLiteral("unload"), QStringLiteral("unload KEXT"),
         QStringLiteral("unload the kext at path KEXT as root"), unloadVerb},
        {QStringLiteral("volumes"),
         QStringLiteral("volumes [--extra-version 10.4|10.5|10.6|10.7] [--json]"),
         QStringLiteral("list the volumes a task can work on, the started system marked, and "
                        "whether each holds S/L/E and kexts in Extra"),
         volumesVerb},
    };
    return table;
}

const CliVerb *CliRegistry::find(const QString &name) {
    for (const CliVerb &verb : verbs()) {
        if (verb.name == name)
            return &verb;
    }
    return nullptr;
}

QString CliRegistry::helpText() {
    return CliHelp::programHelp(verbs());
}

#include "cli/ManPage.h"

#include "cli/CliHelp.h"
#include "cli/CliRegistry.h"
#include "cli/CliSyntax.h"

namespace {

// Text safe in roff: backslashes shown as such, hyphens as hyphens (not soft ones), and
// no line starting with a control character.
QString roff(QString text) {
    text.replace(QLatin1Char('\\'), QStringLiteral("\\e"));
    text.replace(QLatin1Char('-'), QStringLiteral("\\-"));
    if (text.startsWith(QLatin1Char('.')) || text.startsWith(QLatin1Char('\'')))
        text.prepend(QStringLiteral("\\&"));
    return text;
}

QString optionItem(const CliOption &option) {
    QString item = QStringLiteral(".TP\n\\fB%1\\fR").arg(roff(option.name));
    if (option.takesValue())
        item += QStringLiteral(" \\fI%1\\fR").arg(roff(option.value));
    QString help = option.help;
    if (!option.actions.isEmpty())
        help += QStringLiteral(" (%1 only)").arg(option.actions.join(QStringLiteral(" and ")));
    return item + QLatin1Char('\n') + roff(help) + QLatin1Char('\n');
}

const char *description =
    "KextKeeper is for the administrator of a PC that boots macOS through a boot loader\n"
    "which loads kernel extensions (kexts) from an \\fIExtra\\fR folder at the root of a\n"
    "volume. Without a verb it opens its window. With a verb it does one task of the window\n"
    "on the command line, with the same command lines: it runs the system's tools as the user,\n"
    "or as root through \\fBsudo\\fR(8) after asking once for the user's password.\n"
    ".PP\n"
    "Anywhere but on a Mac it works on a simulated Mac: \\fBkextkeeper sandbox create\\fR\n"
    "\\fIDIR\\fR makes one, and \\fB\\-\\-root\\fR \\fIDIR\\fR works on it.\n";

const char *tail =
    ".SH EXIT STATUS\n"
    ".TP\n0\nThe task was done.\n"
    ".TP\n1\nThe task reported an error (its text on standard error), or a question was "
    "answered no.\n"
    ".TP\n2\nBad usage: an unknown verb or option, a missing or wrong value, or a\n"
    "\\fB\\-\\-root\\fR folder that does not exist.\n"
    ".SH FILES\n"
    ".TP\n\\fI$XDG_CONFIG_HOME/kextkeeper/Info.plist\\fR\n"
    "The settings (\\fISUCheckAtStartup\\fR, \\fIPrelink Kernel\\fR, \\fIManually recreate "
    "Lion cache\\fR);\n"
    "\\fI~/.config/kextkeeper\\fR when \\fBXDG_CONFIG_HOME\\fR is not set. In an application "
    "bundle on macOS,\nthe bundle's \\fIContents\\fR folder.\n"
    ".TP\n\\fI$XDG_CONFIG_HOME/kextkeeper/CustomKextDirs.plist\\fR\n"
    "Further folders that hold kexts.\n"
    ".TP\n\\fI~/Desktop/Kext Backups/\\fR\n"
    "Kexts an installation replaced, one dated folder per installation.\n"
    ".SH SEE ALSO\n"
    "\\fBsudo\\fR(8)\n";

} // namespace

QString ManPage::write(const QList<CliVerb> &verbs, const QString &version) {
    QString page =
        QStringLiteral(".TH KEXTKEEPER 1 \"\" \"KextKeeper %1\" \"User Commands\"\n"
                       ".SH NAME\n"
                       "kextkeeper \\- install kexts and rebuild kext caches of a macOS volume\n"
                       ".SH SYNOPSIS\n"
                       "\\fBkextkeeper\\fR [\\fB\\-\\-root\\fR \\fIDIR\\fR] "
                       "[\\fB\\-\\-dry\\-run\\fR]\n.br\n"
                       "\\fBkextkeeper\\fR [\\fB\\-\\-root\\fR \\fIDIR\\fR] "
                       "[\\fB\\-\\-dry\\-run\\fR] \\fIVERB\\fR [\\fIARGS\\fR...]\n"
                       ".SH DESCRIPTION\n")
            .arg(roff(version));
    page += QLatin1String(description);
    page += QStringLiteral(".SH OPTIONS\nThese come before the verb.\n");
    for (const CliOption &option : CliHelp::globalOptions())
        page += optionItem(option);
    page += QStringLiteral(".SH VERBS\nEach verb also answers \\fB\\-\\-help\\fR.\n");
    for (const CliVerb &verb : verbs) {
        page += QStringLiteral(".SS %1\n").arg(roff(verb.name));
        for (const QString &line : CliHelp::usageLines(verb))
            page += QStringLiteral("\\fBkextkeeper\\fR %1\n.br\n").arg(roff(line));
        page += roff(verb.summary) + QStringLiteral(".\n");
        for (const CliOption &option : CliSyntax::of(verb.name).options)
            page += optionItem(option);
    }
    page += QLatin1String(tail);
    return page;
}

#include "cli/CliSyntax.h"

#include "volumes/KextFolders.h"

#include <QHash>

namespace {

const QStringList architectures{QStringLiteral("x86_64"), QStringLiteral("i386"),
                                QStringLiteral("ppc"), QStringLiteral("ppc64")};

CliOption volume(const QString &help) {
    return {QStringLiteral("--volume"), QStringLiteral("NAME"), help, CliValue::Volume};
}
CliOption extraVersion() {
    return {QStringLiteral("--extra-version"), QStringLiteral("V"),
            QStringLiteral("work in the version folder Extra/V"), CliValue::Choice,
            KextFolders::versions()};
}
CliOption json(const QStringList &actions = {}) {
    return {QStringLiteral("--json"),
            QString(),
            QStringLiteral("print one JSON document instead of text"),
            CliValue::None,
            {},
            actions};
}
CliOption flag(const char *name, const char *help) {
    return {QLatin1String(name), QString(), QLatin1String(help)};
}

QHash<QString, CliSyntax> table() {
    return {
        {QStringLiteral("check"),
         {{flag("--deps", "also list the libraries the kext links against"), json()},
          {},
          CliValue::Folder}},
        {QStringLiteral("extra"),
         {{volume(QStringLiteral("the volume whose Extra folder to change")),
           flag("--yes", "do not ask before converting")},
          {QStringLiteral("to-kextstore"), QStringLiteral("to-extensions"), QStringLiteral("hide"),
           QStringLiteral("show")}}},
        {QStringLiteral("doctor"),
         {{volume(QStringLiteral("the volume to examine")), extraVersion(), json(),
           flag("--fix", "run the maintenance tasks that fix what was found, after asking"),
           flag("--yes", "do not ask, and also move losing duplicates to the backups")}}},
        {QStringLiteral("install"),
         {{volume(QStringLiteral("the volume to install on (not with --to desktop)")),
           {QStringLiteral("--to"),
            QStringLiteral("WHERE"),
            QStringLiteral("Extra/Extensions (or KextStore), S/L/E, or a new mkext on the desktop"),
            CliValue::Choice,
            {QStringLiteral("extra"), QStringLiteral("sle"), QStringLiteral("desktop")}},
           flag("--backup", "copy the kexts it replaces to ~/Desktop/Kext Backups first"),
           extraVersion()},
          {},
          CliValue::Folder}},
        {QStringLiteral("journal"),
         {{{QStringLiteral("--last"), QStringLiteral("N"),
            QStringLiteral("only the last N entries"), CliValue::Text},
           flag("--failed", "only the commands that failed"),
           json()}}},
        {QStringLiteral("load"), {{}, {}, CliValue::Folder}},
        {QStringLiteral("loaded"),
         {{{QStringLiteral("--filter"), QStringLiteral("TEXT"),
            QStringLiteral("only the kexts whose row contains TEXT, in any case"), CliValue::Text},
           json()}}},
        {QStringLiteral("maintain"),
         {{volume(QStringLiteral("the volume to work on")), extraVersion(),
           flag("--repair-extra", "repair owners and modes of the Extra folder"),
           flag("--rebuild-extra-mkext", "rebuild Extra's Extensions.mkext"),
           flag("--repair-sle", "repair owners and modes of S/L/E and the disk's permissions"),
           flag("--rebuild-caches", "rebuild the system's kext caches")}}},
        {QStringLiteral("mkext"),
         {{json({QStringLiteral("list")}),
           {QStringLiteral("--arch"), QStringLiteral("A"),
            QStringLiteral("the architecture to unpack, or one to build for (again for more)"),
            CliValue::Choice, architectures,
            QStringList{QStringLiteral("unpack"), QStringLiteral("build")}},
           {QStringLiteral("--to"),
            QStringLiteral("DIR"),
            QStringLiteral("the folder to unpack into (the current one if not given)"),
            CliValue::Folder,
            {},
            {QStringLiteral("unpack")}}},
          {QStringLiteral("list"), QStringLiteral("unpack"), QStringLiteral("build")},
          CliValue::Path}},
        {QStringLiteral("reload"), {{}, {}, CliValue::Folder}},
        {QStringLiteral("report"), {{}, {}, CliValue::Path}},
        {QStringLiteral("restore"),
         {{flag("--list", "list the backups (date, volume, kexts)"),
           flag("--yes", "do not ask before putting the kexts back")},
          {},
          CliValue::Folder}},
        {QStringLiteral("sandbox"), {{}, {QStringLiteral("create")}, CliValue::Folder}},
        {QStringLiteral("unload"), {{}, {}, CliValue::Folder}},
        {QStringLiteral("volumes"), {{extraVersion(), json()}}},
    };
}

} // namespace

const CliSyntax &CliSyntax::of(const QString &verb) {
    static const QHash<QString, CliSyntax> syntaxes = table();
    static const CliSyntax none;
    const auto it = syntaxes.constFind(verb);
    return it == syntaxes.constEnd() ? none : *it;
}

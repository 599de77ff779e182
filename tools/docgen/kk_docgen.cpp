// Writes the man page and the shell completions from the verb table, at build time:
// kk_docgen OUTDIR makes OUTDIR/kextkeeper.1, kextkeeper.bash, _kextkeeper, kextkeeper.fish.

#include "cli/CliRegistry.h"
#include "cli/ManPage.h"
#include "cli/ShellCompletions.h"

#include <QCoreApplication>
#include <QDir>
#include <QSaveFile>
#include <QTextStream>

namespace {
bool write(const QString &path, const QString &text) {
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(text.toUtf8()) >= 0 && file.commit();
}
} // namespace

int main(int argc, char **argv) {
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() != 2) {
        QTextStream(stderr) << "usage: kk_docgen OUTDIR\n";
        return 2;
    }
    const QDir out(args[1]);
    QDir().mkpath(out.path());
    const QList<CliVerb> &verbs = CliRegistry::verbs();
    const bool ok = write(out.filePath("kextkeeper.1"), ManPage::write(verbs, KK_VERSION)) &&
                    write(out.filePath("kextkeeper.bash"), ShellCompletions::bash(verbs)) &&
                    write(out.filePath("_kextkeeper"), ShellCompletions::zsh(verbs)) &&
                    write(out.filePath("kextkeeper.fish"), ShellCompletions::fish(verbs));
    if (!ok)
        QTextStream(stderr) << "kk_docgen: could not write into " << out.path() << '\n';
    return ok ? 0 : 1;
}

// `kextkeeper sandbox create DIR` makes a simulated Mac to try the program on anywhere;
// `kextkeeper --root DIR sandbox tool NAME ARGS...` is what that Mac's stand-in tools
// hand over to.

#include "cli/CliVerbs.h"
#include "sandbox/SandboxBuilder.h"
#include "sandbox/SandboxTools.h"

#include <QCoreApplication>
#include <cstdio>

namespace {

int create(CliContext &c, const QStringList &words) {
    if (words.size() != 1 || words.first().startsWith(QLatin1Char('-')))
        return c.usageError(QStringLiteral("create needs the one folder to make it in"));
    if (c.dryRun) {
        c.note(QStringLiteral("would make a sandbox Mac in %1").arg(words.first()));
        return CliOk;
    }
    SandboxBuilder builder(words.first(), QCoreApplication::applicationFilePath());
    if (!builder.create())
        return c.taskError(builder.error());
    for (const QString &warning : builder.warnings())
        c.err << "kextkeeper sandbox: warning: " << warning << Qt::endl;
    c.out << "Sandbox made in " << words.first() << ". Start the program on it with:\n  "
          << QCoreApplication::applicationFilePath() << " --root " << words.first() << Qt::endl;
    return CliOk;
}

int tool(CliContext &c, const QStringList &words) {
    if (words.isEmpty() || !SandboxTools::has(words.first())) {
        c.err << "kextkeeper sandbox tool: unknown tool " << words.value(0) << Qt::endl;
        return CliUsage;
    }
    if (!c.paths().isSandbox()) {
        c.err << "kextkeeper sandbox tool: works only on a sandbox given with --root" << Qt::endl;
        return CliUsage;
    }
    const StandInResult result =
        SandboxTools(c.paths().root(), QCoreApplication::applicationFilePath())
            .run(words.first(), words.mid(1));
    // The tools' bytes go out untouched: they need not be UTF-8.
    c.out.flush();
    c.err.flush();
    std::fwrite(result.out.constData(), 1, size_t(result.out.size()), stdout);
    std::fwrite(result.err.constData(), 1, size_t(result.err.size()), stderr);
    std::fflush(stdout);
    std::fflush(stderr);
    return result.status;
}

} // namespace

int sandboxVerb(CliContext &c) {
    const QString action = c.args.value(0);
    if (action == QLatin1String("create"))
        return create(c, c.args.mid(1));
    if (action == QLatin1String("tool"))
        return tool(c, c.args.mid(1));
    return c.usageError(QStringLiteral("say create DIR"));
}

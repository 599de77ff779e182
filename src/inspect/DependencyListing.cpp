#include "inspect/DependencyListing.h"

#include "exec/ProcessRunner.h"

Command DependencyListing::command(const SystemPaths &paths, const QString &kext) {
    return {paths.system(QStringLiteral("/usr/sbin/kextlibs")), {kext}, false};
}

QString DependencyListing::run(const SystemPaths &paths, const QString &kext) {
    const Command c = command(paths, kext);
    return ProcessRunner::output(c.tool, c.args).value_or(QString());
}

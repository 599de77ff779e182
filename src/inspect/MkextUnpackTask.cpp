#include "inspect/MkextUnpackTask.h"

#include "exec/ProcessRunner.h"
#include "exec/Tr.h"
#include "mkext/MkextBuiltinTool.h"

#include <QDir>
#include <QFileInfo>

MkextUnpackTask::MkextUnpackTask(const SystemPaths &paths, Tool tool)
    : m_paths(paths), m_tool(std::move(tool)) {}

QString MkextUnpackTask::toolPath(const SystemPaths &paths) {
    return paths.system(QStringLiteral("/usr/sbin/mkextunpack"));
}

MkextUnpackTask::Tool MkextUnpackTask::systemTool(const SystemPaths &paths) {
    const QString tool = toolPath(paths);
    return {[tool](const QStringList &args) { return ProcessRunner::output(tool, args); },
            [tool](const QStringList &args) -> std::optional<QString> {
                ProcessRunner::Request request;
                request.program = tool;
                request.args = args;
                request.capture = ProcessRunner::Stream::Error;
                const ProcessRunner::Result result = ProcessRunner::run(request);
                if (!result.launched)
                    return std::nullopt;
                // Error text that is not UTF-8 can't be read, and so counts as none, like any
                // unreadable answer of a tool run as the user.
                return ProcessRunner::decodeUtf8(result.bytes).value_or(QString());
            }};
}

MkextUnpackTask::Tool MkextUnpackTask::builtinTool() {
    // The arguments are the ones built below: "-v" M, or "-a" A "-d" D M.
    return {[](const QStringList &args) -> std::optional<QString> {
                return MkextBuiltinTool::list(args.value(1)).out;
            },
            [](const QStringList &args) -> std::optional<QString> {
                return MkextBuiltinTool::unpack(args.value(1), args.value(3), args.value(4)).err;
            }};
}

bool MkextUnpackTask::hasSystemTool(const SystemPaths &paths) {
    const QFileInfo tool(toolPath(paths));
    return tool.isFile() && tool.isExecutable();
}

QStringList MkextUnpackTask::listingArgs(const QString &mkext) {
    return {QStringLiteral("-v"), mkext};
}

QStringList MkextUnpackTask::unpackArgs(const QString &arch, const QString &folder,
                                        const QString &mkext) {
    return {QStringLiteral("-a"), arch, QStringLiteral("-d"), folder, mkext};
}

QString MkextUnpackTask::defaultFolder() const {
    return m_paths.desktop() + QStringLiteral("/Mkext Contents");
}

QString MkextUnpackTask::listing(const QString &mkext) const {
    return m_tool.output(listingArgs(mkext)).value_or(QString());
}

TaskResult MkextUnpackTask::unpack(const QString &mkext, const QString &arch,
                                   const QString &folder) const {
    if (mkext.isEmpty())
        return TaskResult::failed(kkTr("You haven't selected any mkext."));
    const bool isDefault = folder == defaultFolder();
    if (isDefault)
        QDir().mkpath(folder); // a failure shows as the missing folder below
    if (!QFileInfo::exists(folder))
        return TaskResult::failed(kkTr("Unpack directory doesn't exist."));

    const std::optional<QString> errors = m_tool.errors(unpackArgs(arch, folder, mkext));
    if (errors && errors->isEmpty())
        return TaskResult::done(kkTr("Mkext was unpacked to selected directory."));

    // Don't leave an empty folder of ours on the desktop; one the user chose is theirs.
    if (isDefault &&
        QDir(folder).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot))
        QDir().rmdir(folder);
    if (!errors)
        return TaskResult::failed(kkTr("The mkext tool could not be run."));
    return TaskResult::failed(alertText(*errors));
}

QString MkextUnpackTask::alertText(const QString &errorText) {
    // The comparisons include the tool's final line feed; only an exact match is
    // translated, everything else is the tool's own wording.
    static const char *const missing[] = {
        QT_TRANSLATE_NOOP("KextKeeper", "Architecture x86_64 not found in mkext."),
        QT_TRANSLATE_NOOP("KextKeeper", "Architecture i386 not found in mkext."),
        QT_TRANSLATE_NOOP("KextKeeper", "Architecture ppc not found in mkext."),
        QT_TRANSLATE_NOOP("KextKeeper", "Architecture ppc64 not found in mkext."),
    };
    for (const char *text : missing) {
        if (errorText == QLatin1String(text) + QLatin1Char('\n'))
            return kkTr(text);
    }
    return errorText;
}

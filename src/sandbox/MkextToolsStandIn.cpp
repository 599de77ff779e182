#include "sandbox/MkextToolsStandIn.h"

#include "exec/ProcessRunner.h"
#include "mkext/MkextBuiltinTool.h"

#include <QFileInfo>

MkextToolsStandIn::MkextToolsStandIn(const QString &root, const QString &binary)
    : m_root(root), m_binary(binary) {}

StandInResult MkextToolsStandIn::runBinary(const QStringList &args, bool captureOutput) const {
    ProcessRunner::Request request;
    request.program = m_binary;
    request.args = args;
    request.capture = captureOutput ? ProcessRunner::Stream::Output : ProcessRunner::Stream::Error;
    request.input = ProcessRunner::Input::Null;
    request.waitForExit = true;
    const ProcessRunner::Result run = ProcessRunner::run(request);
    if (!run.launched)
        return StandInResult::failure(QStringLiteral("Can't run %1.\n").arg(m_binary));
    StandInResult result;
    (captureOutput ? result.out : result.err) = run.bytes;
    // Our verb names itself in its errors; the tool it stands in for does not.
    result.err.replace("kextkeeper mkext: ", "");
    result.status = run.exitStatus == 0 ? 0 : 1;
    return result;
}

StandInResult MkextToolsStandIn::kextcache(const QStringList &args) const {
    // The running system's caches: the startup mkext is rebuilt from S/L/E and dated after
    // it, as on a Mac; the sandbox has no kernel to prelink. Apple's tool is silent when
    // all goes well.
    if (args == QStringList{QStringLiteral("-system-caches")}) {
        const QString startup =
            m_root + QStringLiteral("/System/Library/Caches/com.apple.kext.caches/Startup");
        if (QFileInfo(startup).isDir())
            MkextBuiltinTool::build(startup + QStringLiteral("/Extensions.mkext"),
                                    m_root + QStringLiteral("/System/Library/Extensions"), {});
        return {};
    }
    if (args == QStringList{QStringLiteral("-system-prelinked-kernel")})
        return {};
    QStringList archs;
    QStringList folders;
    QString mkext;
    int verbose = 0;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &arg = args.at(i);
        const bool hasValue = i + 1 < args.size();
        if (arg == QLatin1String("-a") && hasValue)
            archs << args.at(++i);
        else if (arg == QLatin1String("-m") && hasValue)
            mkext = args.at(++i);
        else if (arg == QLatin1String("-v") && hasValue)
            verbose = args.at(++i).toInt();
        else if (arg.startsWith(QLatin1Char('-')))
            return StandInResult::failure(
                QStringLiteral("kextcache: unknown option %1\n").arg(arg));
        else
            folders << arg;
    }
    if (mkext.isEmpty() || folders.isEmpty())
        return StandInResult::failure(QStringLiteral("kextcache: no work to do; check your "
                                                     "command line.\n"));
    // The built-in writer also stamps the archive as kextcache does.
    QStringList build =
        QStringList{QStringLiteral("mkext"), QStringLiteral("build"), mkext} + folders;
    for (const QString &arch : archs)
        build << QStringLiteral("--arch") << arch;
    StandInResult result = runBinary(build, false);
    if (result.status == 0 && verbose >= 1)
        result.err += "Created mkext archive " + mkext.toUtf8() + ".\n";
    return result;
}

StandInResult MkextToolsStandIn::mkextunpack(const QStringList &args) const {
    QString arch;
    QString folder;
    bool list = false;
    QStringList files;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &arg = args.at(i);
        const bool hasValue = i + 1 < args.size();
        if (arg == QLatin1String("-a") && hasValue)
            arch = args.at(++i);
        else if (arg == QLatin1String("-d") && hasValue)
            folder = args.at(++i);
        else if (arg == QLatin1String("-v"))
            list = true;
        else
            files << arg;
    }
    if (files.size() != 1 || (!list && folder.isEmpty()))
        return StandInResult::failure(QStringLiteral("no work to do; please specify -d or -v\n"));
    if (!folder.isEmpty()) {
        QStringList unpack{QStringLiteral("mkext"), QStringLiteral("unpack"), files.first(),
                           QStringLiteral("--to"), folder};
        if (!arch.isEmpty())
            unpack << QStringLiteral("--arch") << arch;
        return runBinary(unpack, false);
    }
    return runBinary({QStringLiteral("mkext"), QStringLiteral("list"), files.first()}, true);
}

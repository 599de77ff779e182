#include "exec/SessionExecutor.h"

#include "exec/AdminAuthentication.h"
#include "exec/ProcessRunner.h"

SessionExecutor::SessionExecutor(AdminAuthentication &session) : m_session(session) {}

bool SessionExecutor::authorize() {
    return m_session.authorizeRootTask();
}

CommandResult SessionExecutor::run(const Command &command) {
    if (command.asRoot)
        return m_session.runSynced(command.tool, command.args);
    ProcessRunner::Request request;
    request.program = command.tool;
    request.args = command.args;
    request.waitForExit = true;
    request.keepErrorText = true;
    const ProcessRunner::Result result = ProcessRunner::run(request);
    return {result.launched, result.exitStatus, QString::fromUtf8(result.errorBytes)};
}

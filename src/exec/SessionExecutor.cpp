#include "exec/SessionExecutor.h"

#include "exec/AdminAuthentication.h"
#include "exec/ProcessRunner.h"

SessionExecutor::SessionExecutor(AdminAuthentication &session) : m_session(session) {}

bool SessionExecutor::authorize() {
    return m_session.authorizeRootTask();
}

void SessionExecutor::run(const Command &command) {
    if (command.asRoot) {
        m_session.executeCommandSynced(command.tool, command.args);
        return;
    }
    ProcessRunner::Request request;
    request.program = command.tool;
    request.args = command.args;
    request.waitForExit = true;
    ProcessRunner::run(request);
}

#pragma once

#include "exec/Executor.h"

class AdminAuthentication;

// Runs root commands through the privileged session, one synced launch each; user
// commands run as ourselves and are waited for.
class SessionExecutor final : public Executor {
public:
    explicit SessionExecutor(AdminAuthentication &session);
    bool authorize() override;
    CommandResult run(const Command &command) override;

private:
    AdminAuthentication &m_session;
};

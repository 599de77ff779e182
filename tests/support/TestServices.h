#pragma once

#include "exec/AdminAuthentication.h"
#include "exec/AppServices.h"

// The program's services for one test: a session that runs root commands directly (as on
// a sandbox) and alerts that go to the test's sheets. The started system is what the
// root's diskutil says (none where there is none) until the test answers itself.
struct TestServices {
    AdminAuthentication session;
    AppServices services;

    explicit TestServices(const SystemPaths &paths, SheetPresenter *sheets = nullptr)
        : session(directConfig(paths), nullptr, nullptr),
          services(paths, session, Alerts(nullptr, sheets)) {}

    // Every task's root sequence goes to this executor.
    void useExecutor(std::shared_ptr<Executor> executor) {
        services.setExecutorFactory([executor] { return executor; });
    }

private:
    static AdminAuthentication::Config directConfig(const SystemPaths &paths) {
        AdminAuthentication::Config config;
        config.direct = true;
        config.environment = paths.rootEnvironment();
        return config;
    }
};

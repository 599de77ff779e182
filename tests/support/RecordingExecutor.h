#pragma once

#include "exec/Executor.h"

#include <QList>

// Records every command a plan runs; authorization answers as told.
class RecordingExecutor final : public Executor {
public:
    bool grant = true;
    int authorizeCalls = 0;
    QList<Command> commands;

    bool authorize() override {
        ++authorizeCalls;
        return grant;
    }
    CommandResult run(const Command &command) override {
        commands << command;
        return {};
    }
    // Nothing is copied, so nothing is read back.
    bool simulated() const override { return true; }
};

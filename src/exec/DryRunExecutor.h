#pragma once

#include "exec/Executor.h"
#include "exec/FileOverlay.h"

#include <functional>

// --dry-run: hands every root command on (printed as a line that could be pasted into a
// terminal, or listed in the window's Log) and changes nothing. The commands' effects
// are followed on an overlay, so the plan's later tests see what the real run would
// see, and the list equals the real run's.
class DryRunExecutor final : public Executor {
public:
    using Sink = std::function<void(const Command &)>;
    explicit DryRunExecutor(Sink sink) : m_sink(std::move(sink)) {}

    bool authorize() override { return true; }
    CommandResult run(const Command &command) override {
        if (command.asRoot && m_sink)
            m_sink(command);
        m_overlay.apply(command);
        return {};
    }
    bool exists(const QString &path) const override { return m_overlay.exists(path); }
    bool simulated() const override { return true; }

private:
    Sink m_sink;
    FileOverlay m_overlay;
};

#pragma once

#include "exec/Executor.h"

#include <QTextStream>

// --dry-run: prints every root command as a line that could be pasted into a terminal
// and changes nothing.
class DryRunExecutor final : public Executor {
public:
    explicit DryRunExecutor(QTextStream &out) : m_out(out) {}
    bool authorize() override { return true; }
    void run(const Command &command) override {
        if (command.asRoot)
            m_out << command.toShellLine() << Qt::endl;
    }

private:
    QTextStream &m_out;
};

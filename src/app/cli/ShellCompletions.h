#pragma once

#include <QList>
#include <QString>

struct CliVerb;

// Completion scripts for bash, zsh and fish, written from the verb table at build time.
// They complete the global options, the verbs, each verb's actions and options, the
// options' fixed values, files and folders, and volume titles, which they ask of the
// program being completed (`kextkeeper [--root DIR] volumes`).
class ShellCompletions {
public:
    static QString bash(const QList<CliVerb> &verbs);
    static QString zsh(const QList<CliVerb> &verbs);
    static QString fish(const QList<CliVerb> &verbs);
};

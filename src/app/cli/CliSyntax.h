#pragma once

#include "cli/CliOption.h"

#include <QList>

// What each verb accepts after its name: its options (parsed by CliArgs from this very
// list), the action words one of which comes first, and what its other words are. The
// verb's --help, the man page and the shell completions are written from it too, so
// none of them can say something the parser does not do.
struct CliSyntax {
    QList<CliOption> options = {}; // besides --help, which every verb answers
    QStringList actions = {};      // "list", "unpack", "build"
    CliValue operands = CliValue::None;

    // The syntax of the verb called `verb` (an empty one for a verb it does not know).
    static const CliSyntax &of(const QString &verb);
};

#pragma once

#include "cli/CliOption.h"

#include <QList>

struct CliVerb;

// The help texts, all made from the verb table: the program's (`kextkeeper --help`), a
// verb's (`kextkeeper VERB --help`) and the hint after a usage error.
class CliHelp {
public:
    // The options that come before the verb.
    static const QList<CliOption> &globalOptions();
    static QString programHelp(const QList<CliVerb> &verbs);
    static QString verbHelp(const CliVerb &verb);
    // The lines a verb's usage string stands for ("mkext list FILE | mkext unpack ..." is
    // three), each starting with the verb's name.
    static QStringList usageLines(const CliVerb &verb);
    // "--volume NAME", or "--repair-sle".
    static QString optionWithValue(const CliOption &option);
    // "Try 'kextkeeper VERB --help'." ("kextkeeper --help" without a verb).
    static QString tryHelp(const QString &verb);
};

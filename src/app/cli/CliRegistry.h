#pragma once

#include "cli/CliContext.h"

#include <QList>
#include <QString>

// One command-line verb: its name, its help lines and the function that runs it.
struct CliVerb {
    QString name;
    QString usage;   // "install --volume NAME --to extra|sle|desktop BUNDLE..."
    QString summary; // one line for --help
    int (*run)(CliContext &);
};

// The table of every verb, in the order --help lists them. A new verb is one row here
// and one function in its own file.
class CliRegistry {
public:
    static const QList<CliVerb> &verbs();
    // The verb called `name`, or null.
    static const CliVerb *find(const QString &name);
    static QString helpText();
};

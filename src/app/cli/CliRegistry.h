#pragma once

#include "cli/CliContext.h"

#include <QString>
#include <functional>
#include <map>

// Each verb lives in its own file and registers itself here from a static object, so
// adding a verb never touches main.
struct CliVerb {
    QString name;
    QString usage;   // "install --volume NAME --to extra|sle|desktop BUNDLE..."
    QString summary; // one line for --help
    std::function<int(CliContext &)> run;
};

class CliRegistry {
public:
    static bool add(CliVerb verb);
    static const std::map<QString, CliVerb> &verbs();
    static QString helpText();
};

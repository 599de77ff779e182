#pragma once

#include <QString>
#include <QStringList>

// What a shell may offer for an option's value or a verb's words.
enum class CliValue {
    None,   // nothing to offer
    Text,   // free text
    Volume, // a volume title, as `kextkeeper volumes` lists it
    Path,   // a file or folder
    Folder, // a folder
    Choice, // one of a fixed list
};

// One option of a verb, as its help, the man page and the completions show it and as
// its parser accepts it.
struct CliOption {
    QString name;  // "--volume"
    QString value; // the value's placeholder ("NAME"); empty for a switch
    QString help;  // one line
    CliValue kind = CliValue::None;
    QStringList choices = {}; // for CliValue::Choice
    QStringList actions = {}; // the verb's actions it belongs to; empty: all of them

    bool takesValue() const { return !value.isEmpty(); }
};

#pragma once

#include <QByteArray>
#include <QString>

// What Apple's `file -b` of 10.6/10.7 prints for a file, for the sandbox's stand-in:
// the Mach-O wording for thin and universal files ("Mach-O object i386",
// "Mach-O 64-bit kext bundle x86_64", one "(for architecture ...)" line per slice),
// "empty" and "data" for the rest. The text carries no final line feed.
class MachODescription {
public:
    // `pathAsGiven` appears on the per-slice lines of a universal file, even with -b.
    static QString describe(const QByteArray &bytes, const QString &pathAsGiven);
    static QString describeFile(const QString &path);
};

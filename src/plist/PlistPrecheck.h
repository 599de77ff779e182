#pragma once

#include <QByteArray>
#include <QString>

// Tells, before libplist sees a property list, whether it is safe to hand over. libplist
// parses and frees nested arrays and dictionaries by recursion, so a file of 200,000
// nested arrays runs it off the stack; a binary list can also share one object between
// many parents, which libplist copies out in full, or point back at its own parent; and
// a NUL inside a string or key stops the program on an assertion in libplist as soon as
// the text is read. XML is measured by its element tags and searched for NUL bytes; a
// binary list is walked through its object table without recursion.
class PlistPrecheck {
public:
    static constexpr int maxDepth = 64;         // elements inside each other, <plist> included
    static constexpr qint64 maxNodes = 1000000; // objects of a binary list once copied out

    // True when the bytes may go to libplist: not nested deeper than maxDepth, no NUL in a
    // string or key and, for a binary list, a well-formed table without cycles and within
    // maxNodes.
    static bool acceptable(const QByteArray &bytes) { return problem(bytes).isEmpty(); }
    // "" when acceptable, otherwise why not: "is nested too deeply", ...
    static QString problem(const QByteArray &bytes);

private:
    static bool xmlWithin(const QByteArray &bytes);
    static bool binaryWithin(const QByteArray &bytes);
};

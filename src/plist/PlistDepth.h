#pragma once

#include <QByteArray>

// Tells, before libplist sees a property list, whether its nesting stays within what any
// real one needs. libplist parses and frees nested arrays and dictionaries by recursion, so
// a file of 200,000 nested arrays runs it off the stack; a binary list can also share one
// object between many parents, which libplist copies out in full, or point back at its own
// parent. XML is measured by its element tags; a binary list by walking its object table
// without recursion.
class PlistDepth {
public:
    static constexpr int maxDepth = 64;         // elements inside each other, <plist> included
    static constexpr qint64 maxNodes = 1000000; // objects of a binary list once copied out

    // True when the bytes may go to libplist: not nested deeper than maxDepth and, for a
    // binary list, a well-formed table without cycles and within maxNodes.
    static bool acceptable(const QByteArray &bytes);

private:
    static bool xmlWithin(const QByteArray &bytes);
    static bool binaryWithin(const QByteArray &bytes);
};

#pragma once

#include <QString>
#include <QStringList>
#include <functional>

// Section 4 of the system report: one row per loaded kext with its version, bundle path
// and architectures. The rows are built in two halves in parallel, because every kext
// with a known path costs one or two runs of the file-type tool.
struct LoadedKextRows {
    // Parallel lists: entry i of each describes the same kext. The first half starts
    // with the header row.
    QStringList names;
    QStringList versions;
    QStringList paths;
    QStringList architectures;

    enum class Half { First, Second };

    // Where a bundle identifier's kext lies ("" when unknown), and the file-type tool's
    // description of a kext's executable.
    using PathLookup = std::function<QString(const QString &identifier)>;
    using Probe = std::function<QString(const QString &kextPath)>;

    // One half of a kext status listing: the first takes lines 1 up to count / 2, the
    // second from there up to the last line, which is never read.
    static LoadedKextRows build(const QString &kextstatOutput, Half half, const PathLookup &pathOf,
                                const Probe &probe);

    // "\n4. Loaded Kexts:\n" and the table of both halves, each column but the last
    // padded to its widest value + 2.
    static QString section(const LoadedKextRows &first, const LoadedKextRows &second);
};

#pragma once

#include <QString>
#include <functional>

// Tells for which processors a kext is built. The probe text is the description of the
// bundle's executable (see MachODescriber); each user then searches it for its own fixed
// marker words. The markers are kept exactly as they are even where they over-match:
// "Mach-O 64-bit" counts as x86_64 for any 64-bit file, and a thin ppc64 object also
// counts as ppc because "Mach-O object ppc" is part of "Mach-O object ppc64".
class ArchitectureProbe {
public:
    using Describer = std::function<QString(const QString &executable)>;

    struct Architectures {
        bool x86_64 = false;
        bool i386 = false;
        bool ppc = false;
        bool ppc64 = false;
        bool operator==(const Architectures &) const = default;
    };

    explicit ArchitectureProbe(Describer describer = {});

    // The executable is always named after the bundle folder (Foo.kext -> Foo). It is
    // looked for in Contents/MacOS (when that folder exists) and then at the top level of
    // the bundle (old-style kexts); when both exist the second description wins. "" when
    // neither exists.
    QString probeText(const QString &kextPath) const;

    // The check page: both markers of all four processors.
    static Architectures checkPageMarkers(const QString &text);
    // The loaded kext browser tests only x86_64 and i386, with the same markers.
    static Architectures loadedKextMarkers(const QString &text);
    // The report's cell: "x86_64 " or 7 blanks, "i386 " or 5 blanks, "ppc " or 5 blanks,
    // from bare word searches ("ppc" also matches ppc64).
    static QString reportCell(const QString &text);

    // The executable paths the probe describes, in order.
    static QString contentsExecutable(const QString &kextPath);
    static QString topLevelExecutable(const QString &kextPath);

private:
    Describer m_describer;
};

#pragma once

#include <QList>
#include <QPair>
#include <QString>

// One made-up kext of the sandbox: where it lies, what its Info.plist says and what kind
// of executable it carries.
struct SandboxKext {
    enum class Binary {
        None,   // codeless (a library or a personality-only kext)
        Fat,    // x86_64 kext bundle + i386 object, as most 10.6 kexts
        I386,   // a thin 32-bit relocatable object
        X86_64, // a thin 64-bit kext bundle
        Ppc,    // a thin PowerPC object from older days
    };

    QString path; // below the sandbox root, ending in ".kext"
    QString identifier;
    QString version;
    Binary binary = Binary::Fat;
    QList<QPair<QString, QString>> libraries; // OSBundleLibraries: identifier, version
    bool oldStyle = false;                    // Info.plist and executable at the bundle's top level
    bool loaded = false;                      // in the kernel of a fresh sandbox
    QString compatibleVersion;

    // What is wrong with it on purpose, for the kext doctor to find.
    enum class Flaw {
        None,
        ForeignOwner,      // its executable belongs to a user, not to root
        GroupWritable,     // its executable's group may write it
        InnerLink,         // a symbolic link inside the bundle
        BrokenInfoPlist,   // Info.plist is not a property list
        MissingExecutable, // CFBundleExecutable names a file that isn't there
        MissingLibrary,    // a library it needs is on no volume
    };
    Flaw flaw = Flaw::None;
    bool bootRequired = true; // OSBundleRequired "Root"
    bool addedLater = false;  // copied into its folder after the Extra mkext was built

    QString name() const;           // "Foo" for ".../Foo.kext"
    QString infoPlistPath() const;  // relative, Contents/Info.plist or Info.plist
    QString executablePath() const; // relative, empty without a binary
};

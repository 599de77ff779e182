#pragma once

#include <QString>

// The folder that holds our settings (Info.plist, CustomKextDirs.plist). Inside an
// application bundle it is the bundle's Contents folder, found from where the executable
// lies, so the answer is the same before and after the QApplication exists. Anywhere
// else (an installed Linux binary, a build folder) it is the per-user config folder.
class ContentsFolder {
public:
    // ".../KextKeeper.app/Contents" for ".../KextKeeper.app/Contents/MacOS/KextKeeper";
    // otherwise configHome + "/kextkeeper".
    static QString forExecutable(const QString &executable, const QString &configHome);
    // The running program's, from its executable and $XDG_CONFIG_HOME (or ~/.config).
    static QString ofThisProgram();
    // The running executable's canonical path, asked of the system rather than of
    // argv[0] or QCoreApplication (empty where the system cannot tell).
    static QString executablePath();
};

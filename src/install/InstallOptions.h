#pragma once

#include <QString>
#include <QStringList>

// What the installation page says when the install button is pressed, with the settings
// of that moment, read on the UI thread so the job never touches a widget or a file.
struct InstallOptions {
    QStringList bundles;  // the install list, in order
    QString volume;       // title of the target volume
    QString extraVersion; // "10.4" .. "10.7", or empty for Extra itself
    bool toExtra = false;
    bool toSle = false;
    bool toDesktop = false;
    bool backup = false;
    bool prelinkKernel = false;     // the "Prelink Kernel" menu mark
    bool recreateLionCache = false; // "Manually recreate Lion cache" in the settings
};

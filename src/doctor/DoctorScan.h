#pragma once

#include "doctor/DoctorKext.h"

#include <QHash>
#include <QList>
#include <QString>

// Everything the checks look at, read once from the volume: its folders, its system
// version and every kext of S/L/E and of the Extra base folder's Extensions and KextStore.
struct DoctorScan {
    QString volumeRoot;   // no trailing slash
    QString extraVersion; // "" or "10.4" .. "10.7"
    QString extraBase;    // Extra itself or its version folder
    QString sle;
    // The version the kexts must suit: the volume's ProductVersion, or the version folder's
    // name when the volume has no system; "" when neither tells.
    QString systemVersion;
    // What that version says of its kernel, worked out once rather than for every kext.
    bool kernelKnown = false;
    QStringList kernelArchitectures;
    std::optional<KextVersion> kernelVersion;
    QList<DoctorKext> kexts;
    // Bundle identifier -> positions in `kexts`, in scan order.
    QHash<QString, QList<int>> byIdentifier;

    QString extensions() const { return extraBase + QStringLiteral("/Extensions"); }
    QString kextStore() const { return extraBase + QStringLiteral("/KextStore"); }
};

#pragma once

#include "doctor/BundleWalk.h"
#include "doctor/KextVersion.h"

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>
#include <optional>

// What the doctor read of one kext: where it lies, its Info.plist's keys, its executable's
// processors and what the walk over its files met.
struct DoctorKext {
    // In the order the folders are scanned; also the order in which copies win a tie.
    enum class Place { Sle, ExtraExtensions, KextStore };

    QString path;
    Place place = Place::Sle;
    QString container; // the kext whose plug-in this is, or ""
    bool isLink = false;

    QString infoFile; // "" when the bundle has no Info.plist
    bool infoRead = false;
    QString identifier;
    QString version;
    QString compatibleVersion;                // "" when not declared
    std::optional<KextVersion> parsedVersion; // absent when not a version
    std::optional<KextVersion> parsedCompatible;
    bool hasPackageType = false;
    QString packageType;
    bool hasExecutableKey = false;
    QString executableName;
    bool hasRequired = false;
    QString required;                         // OSBundleRequired
    QList<QPair<QString, QString>> libraries; // OSBundleLibraries, identifier and version

    QString executablePath;    // the file CFBundleExecutable names, when it is there
    bool machO = false;        // the executable has a Mach-O header
    QStringList architectures; // processors it has code for: "i386", "x86_64", ...
    BundleWalk::Result files;

    bool inExtra() const { return place != Place::Sle; }
};

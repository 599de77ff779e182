#pragma once

#include "doctor/KextDoctor.h"

#include <QByteArray>
#include <QString>

// The doctor's findings as the command line prints them: one line per finding,
// "SEVERITY ID PATH: text; fix: ...", then a summary; or everything as one JSON document.
class DoctorReport {
public:
    static QString line(const DoctorFinding &finding);
    // "2 errors and 5 warnings in 58 kexts on Macintosh HD (10.6.8)."
    static QString summary(const KextDoctor::Result &result, const QString &volume);
    static QByteArray json(const KextDoctor::Result &result, const QString &volume,
                           const QString &extraVersion);
};

#include "doctor/DuplicateCheck.h"

#include <algorithm>

namespace {

using Place = DoctorKext::Place;
using Severity = DoctorFinding::Severity;

QString placeName(Place place) {
    switch (place) {
    case Place::Sle:
        return QStringLiteral("S/L/E");
    case Place::ExtraExtensions:
        return QStringLiteral("Extra Extensions");
    case Place::KextStore:
        return QStringLiteral("KextStore");
    }
    return {};
}

// Unreadable versions sort below every real one.
bool beats(const DoctorKext &a, const DoctorKext &b) {
    if (a.parsedVersion != b.parsedVersion)
        return a.parsedVersion > b.parsedVersion;
    return a.place < b.place;
}

// Why the loser's being there is harmful (an error) or only untidy (a warning).
Severity severity(const DoctorKext &loser, const DoctorKext &winner) {
    if (loser.place == winner.place)
        return Severity::Error; // the folder's own order decides which one loads
    if (loser.inExtra() && winner.place == Place::Sle)
        return Severity::Error; // the boot loader's older copy keeps the system's out
    return Severity::Warning;
}

} // namespace

void DuplicateCheck::run(const DoctorScan &scan, DoctorFindings &findings) {
    for (auto it = scan.byIdentifier.cbegin(); it != scan.byIdentifier.cend(); ++it) {
        if (it.value().size() < 2)
            continue;
        QList<int> copies = it.value();
        std::stable_sort(copies.begin(), copies.end(), [&scan](int a, int b) {
            return beats(scan.kexts.at(a), scan.kexts.at(b));
        });
        const DoctorKext &winner = scan.kexts.at(copies.first());
        for (qsizetype i = 1; i < copies.size(); ++i) {
            const DoctorKext &loser = scan.kexts.at(copies.at(i));
            const QString text =
                QStringLiteral("%1 %2 is also at %3 (%4, %5): the kernel refuses the second "
                               "copy of an identifier, so only one may stay")
                    .arg(it.key(), loser.version, winner.path, winner.version,
                         placeName(winner.place));
            findings.append({severity(loser, winner), QStringLiteral("D9"), loser.path, loser.path,
                             text, DoctorFinding::Fix::RemoveCopy});
        }
    }
}

#include "doctor/KextDoctor.h"

#include "doctor/ArchiveChecks.h"
#include "doctor/BundleChecks.h"
#include "doctor/DoctorInventory.h"
#include "doctor/DuplicateCheck.h"
#include "doctor/LibraryChecks.h"

#include <QHash>
#include <algorithm>

int KextDoctor::Result::count(DoctorFinding::Severity severity) const {
    return int(std::count_if(findings.cbegin(), findings.cend(), [severity](const auto &finding) {
        return finding.severity == severity;
    }));
}

KextDoctor::Result KextDoctor::run(const Options &options) {
    const DoctorScan scan =
        DoctorInventory::take(options.volumeRoot, options.extraVersion, options.owner);
    Result result;
    result.kexts = int(scan.kexts.size());
    result.systemVersion = scan.systemVersion;
    for (const DoctorKext &kext : scan.kexts)
        BundleChecks::run(scan, kext, result.findings);
    LibraryChecks::run(scan, result.findings);
    DuplicateCheck::run(scan, result.findings);
    ArchiveChecks::run(scan, result.findings);

    // One kext's findings together, kexts by folder and path, the archives last; within a
    // kext by check.
    QList<const DoctorKext *> kexts;
    for (const DoctorKext &kext : scan.kexts)
        kexts << &kext;
    std::stable_sort(kexts.begin(), kexts.end(), [](const DoctorKext *a, const DoctorKext *b) {
        return std::pair(a->place, a->path) < std::pair(b->place, b->path);
    });
    QHash<QString, int> order;
    for (int i = 0; i < kexts.size(); ++i)
        order.insert(kexts.at(i)->path, i);
    // Each finding's place is looked up once, not at every comparison of the sort.
    QList<std::pair<std::pair<int, int>, qsizetype>> ranks;
    ranks.reserve(result.findings.size());
    for (qsizetype i = 0; i < result.findings.size(); ++i) {
        const DoctorFinding &finding = result.findings.at(i);
        ranks.append(
            {{order.value(finding.kext, int(order.size())), finding.id.mid(1).toInt()}, i});
    }
    std::stable_sort(ranks.begin(), ranks.end(),
                     [](const auto &a, const auto &b) { return a.first < b.first; });
    DoctorFindings sorted;
    sorted.reserve(result.findings.size());
    for (const auto &rank : ranks)
        sorted.append(std::move(result.findings[rank.second]));
    result.findings = std::move(sorted);
    return result;
}

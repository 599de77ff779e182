#include "doctor/DoctorInventory.h"

#include "doctor/KernelFacts.h"
#include "inspect/MachODescriber.h"
#include "plist/PlistFile.h"
#include "volumes/KextFolderScan.h"
#include "volumes/KextFolders.h"

#include <QFutureSynchronizer>
#include <QtConcurrent/QtConcurrentRun>
#include <cstdlib>
#include <deque>
#include <vector>

namespace {

using Place = DoctorKext::Place;

QList<QPair<QString, QString>> libraries(plist_t info) {
    QList<QPair<QString, QString>> list;
    plist_t dict = plist_dict_get_item(info, "OSBundleLibraries");
    if (!dict || plist_get_node_type(dict) != PLIST_DICT)
        return list;
    plist_dict_iter it = nullptr;
    plist_dict_new_iter(dict, &it);
    for (;;) {
        char *key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(dict, it, &key, &value);
        if (!key)
            break;
        QString version;
        if (value && plist_get_node_type(value) == PLIST_STRING) {
            char *text = nullptr;
            plist_get_string_val(value, &text);
            version = QString::fromUtf8(text);
            free(text);
        }
        list.append({QString::fromUtf8(key), version});
        free(key);
    }
    free(it);
    return list;
}

void readInfo(DoctorKext &kext, plist_t info) {
    auto text = [info](const char *key) { return PlistFile::string(info, key); };
    kext.infoRead = true;
    kext.identifier = text("CFBundleIdentifier").value_or(QString());
    kext.version = text("CFBundleVersion").value_or(QString());
    kext.compatibleVersion = text("OSBundleCompatibleVersion").value_or(QString());
    kext.parsedVersion = KextVersion::parse(kext.version);
    kext.parsedCompatible = KextVersion::parse(kext.compatibleVersion);
    const std::optional<QString> type = text("CFBundlePackageType");
    kext.hasPackageType = type.has_value();
    kext.packageType = type.value_or(QString());
    const std::optional<QString> executable = text("CFBundleExecutable");
    kext.hasExecutableKey = executable.has_value();
    kext.executableName = executable.value_or(QString());
    const std::optional<QString> required = text("OSBundleRequired");
    kext.hasRequired = required.has_value();
    kext.required = required.value_or(QString());
    kext.libraries = libraries(info);
}

// Where the file CFBundleExecutable names must be, relative to the bundle: in
// Contents/MacOS, or at the top of a bundle without Contents; "" when the name would
// leave the folder.
QString executableRelative(const DoctorKext &kext) {
    if (kext.executableName.isEmpty() || kext.executableName.contains(QLatin1Char('/')) ||
        kext.executableName == QLatin1String("..") || kext.executableName == QLatin1String("."))
        return {};
    const bool contents = kext.infoFile.endsWith(QLatin1String("/Contents/Info.plist"));
    return (contents ? QStringLiteral("Contents/MacOS/") : QString()) + kext.executableName;
}

// What needs the bundle's files: their owners, modes and links, and the executable, whose
// being there as a plain file the walk tells on its way.
void inspect(DoctorKext &kext, const BundleWalk::OwnerLookup &owner) {
    const QString executable = executableRelative(kext);
    kext.files = BundleWalk::walk(kext.path, owner, executable);
    kext.isLink = kext.files.isLink;
    if (kext.isLink)
        return; // never read through: the loaders don't
    if (kext.files.wantedFound) {
        kext.executablePath = kext.path + QLatin1Char('/') + executable;
        kext.architectures = MachODescriber::processors(kext.executablePath);
        kext.machO = !kext.architectures.isEmpty();
    }
}

// Kexts are handed to the thread pool in batches while the scan goes on, since most of a
// run waits on the file system; a task per kext would cost the pool's locking and wake-ups
// more than walking a small bundle does.
class Inspections {
public:
    explicit Inspections(const BundleWalk::OwnerLookup &owner) : m_owner(owner) {}

    void add(DoctorKext &kext) {
        m_batch.push_back(&kext);
        if (m_batch.size() >= BatchSize)
            flush();
    }

    void waitForFinished() {
        flush();
        m_running.waitForFinished();
    }

private:
    static constexpr size_t BatchSize = 32;

    void flush() {
        if (m_batch.empty())
            return;
        m_running.addFuture(QtConcurrent::run([batch = std::move(m_batch), this] {
            for (DoctorKext *kext : batch)
                inspect(*kext, m_owner);
        }));
        m_batch.clear();
    }

    const BundleWalk::OwnerLookup &m_owner;
    std::vector<DoctorKext *> m_batch;
    QFutureSynchronizer<void> m_running;
};

// Scans one folder. The list keeps its elements in place while their batches run.
void scanFolder(std::deque<DoctorKext> &kexts, Inspections &inspections, const QString &folder,
                Place place) {
    QStringList paths;
    QStringList identifiers;
    KextFolderScan scanner(paths, identifiers);
    scanner.setVisitor(
        [&](const KextFolderScan::Bundle &entry) {
            // Only bundles named as kexts are loaded; anything else in the folder is ignored.
            if (!entry.path.endsWith(QLatin1String(".kext")))
                return;
            DoctorKext &kext = kexts.emplace_back();
            kext.path = entry.path;
            kext.place = place;
            kext.container = entry.container;
            kext.infoFile = entry.infoFile;
            if (entry.info)
                readInfo(kext, entry.info);
            inspections.add(kext);
        },
        KextFolderScan::PlugIns::Loader);
    scanner.scan(folder);
}

} // namespace

DoctorScan DoctorInventory::take(const QString &volumeRoot, const QString &extraVersion,
                                 const BundleWalk::OwnerLookup &owner) {
    DoctorScan scan;
    scan.volumeRoot = volumeRoot;
    scan.extraVersion = extraVersion;
    const KextFolders folders(volumeRoot, extraVersion);
    scan.extraBase = folders.extraBase();
    scan.sle = folders.sle();
    scan.systemVersion = productVersion(volumeRoot);
    if (scan.systemVersion.isEmpty())
        scan.systemVersion = extraVersion;
    const KernelFacts kernel(scan.systemVersion);
    scan.kernelKnown = kernel.known();
    scan.kernelArchitectures = kernel.architectures();
    scan.kernelVersion = KextVersion::parse(kernel.kernelVersion());
    std::deque<DoctorKext> kexts;
    Inspections inspections(owner);
    scanFolder(kexts, inspections, scan.sle, Place::Sle);
    scanFolder(kexts, inspections, scan.extensions(), Place::ExtraExtensions);
    scanFolder(kexts, inspections, scan.kextStore(), Place::KextStore);
    inspections.waitForFinished();
    scan.kexts.reserve(qsizetype(kexts.size()));
    for (DoctorKext &kext : kexts)
        scan.kexts.append(std::move(kext));
    for (int i = 0; i < scan.kexts.size(); ++i) {
        const DoctorKext &kext = scan.kexts.at(i);
        if (!kext.isLink && !kext.identifier.isEmpty())
            scan.byIdentifier[kext.identifier].append(i);
    }
    return scan;
}

QString DoctorInventory::productVersion(const QString &volumeRoot) {
    const PlistPtr version = PlistFile::readDictionary(KextFolders(volumeRoot).systemVersionFile());
    return version ? PlistFile::string(version.get(), "ProductVersion").value_or(QString())
                   : QString();
}

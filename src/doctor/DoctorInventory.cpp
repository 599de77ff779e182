#include "doctor/DoctorInventory.h"

#include "inspect/MachODescriber.h"
#include "plist/PlistFile.h"
#include "volumes/KextFolderScan.h"
#include "volumes/KextFolders.h"

#include <QFileInfo>
#include <cstdlib>

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

// The file CFBundleExecutable names: in Contents/MacOS, or at the top of a bundle
// without Contents; "" when it isn't there or the name would leave the folder.
QString executableFile(const DoctorKext &kext) {
    if (kext.executableName.isEmpty() || kext.executableName.contains(QLatin1Char('/')) ||
        kext.executableName == QLatin1String("..") || kext.executableName == QLatin1String("."))
        return {};
    const bool contents = kext.infoFile.endsWith(QLatin1String("/Contents/Info.plist"));
    const QString path = kext.path +
                         (contents ? QStringLiteral("/Contents/MacOS/") : QStringLiteral("/")) +
                         kext.executableName;
    return QFileInfo(path).isFile() ? path : QString();
}

void scanFolder(DoctorScan &scan, const QString &folder, Place place,
                const BundleWalk::OwnerLookup &owner) {
    if (!QFileInfo(folder).isDir())
        return;
    QStringList paths;
    QStringList identifiers;
    KextFolderScan scanner(paths, identifiers);
    scanner.setVisitor(
        [&](const KextFolderScan::Bundle &entry) {
            // Only bundles named as kexts are loaded; anything else in the folder is ignored.
            if (!entry.path.endsWith(QLatin1String(".kext")))
                return;
            DoctorKext kext;
            kext.path = entry.path;
            kext.place = place;
            kext.container = entry.container;
            kext.isLink = QFileInfo(entry.path).isSymLink();
            kext.infoFile = entry.infoFile;
            if (entry.info)
                readInfo(kext, entry.info);
            kext.files = BundleWalk::walk(entry.path, owner);
            if (kext.isLink) { // never read through: the loaders don't
                scan.kexts.append(kext);
                return;
            }
            kext.executablePath = executableFile(kext);
            if (!kext.executablePath.isEmpty()) {
                kext.architectures = DoctorInventory::architectures(kext.executablePath);
                kext.machO = !kext.architectures.isEmpty();
            }
            if (!kext.identifier.isEmpty())
                scan.byIdentifier[kext.identifier].append(int(scan.kexts.size()));
            scan.kexts.append(kext);
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
    scanFolder(scan, scan.sle, Place::Sle, owner);
    scanFolder(scan, scan.extensions(), Place::ExtraExtensions, owner);
    scanFolder(scan, scan.kextStore(), Place::KextStore, owner);
    return scan;
}

QString DoctorInventory::productVersion(const QString &volumeRoot) {
    const std::unique_ptr<PList::Dictionary> version =
        PlistFile::readDictionary(KextFolders(volumeRoot).systemVersionFile());
    return version ? PlistFile::string(*version, "ProductVersion").value_or(QString()) : QString();
}

QStringList DoctorInventory::architectures(const QString &executable) {
    QStringList found;
    const QStringList lines = MachODescriber::describe(executable).split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        // A universal file's slices are described after a tab, a thin file on its own line;
        // the processor is the last word of a Mach-O description.
        QString description = line;
        if (line.contains(QLatin1String(" (for architecture ")))
            description = line.section(QLatin1Char('\t'), -1);
        if (!description.startsWith(QLatin1String("Mach-O ")) ||
            description.startsWith(QLatin1String("Mach-O universal")))
            continue;
        const QString processor = description.section(QLatin1Char(' '), -1);
        if (!found.contains(processor))
            found << processor;
    }
    return found;
}

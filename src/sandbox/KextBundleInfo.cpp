#include "sandbox/KextBundleInfo.h"

#include "plist/PlistFile.h"

#include <QDirIterator>
#include <QFileInfo>

std::optional<KextBundleInfo> KextBundleInfo::read(const QString &bundlePath) {
    const bool modern = QFileInfo::exists(bundlePath + QStringLiteral("/Contents/Info.plist"));
    const QString contents = modern ? bundlePath + QStringLiteral("/Contents") : bundlePath;
    const std::unique_ptr<PList::Dictionary> plist =
        PlistFile::readDictionary(contents + QStringLiteral("/Info.plist"));
    if (!plist)
        return std::nullopt;
    KextBundleInfo info;
    info.identifier = PlistFile::string(*plist, "CFBundleIdentifier").value_or(QString());
    if (info.identifier.isEmpty())
        return std::nullopt;
    info.version = PlistFile::string(*plist, "CFBundleVersion").value_or(QString());
    const QString executable = PlistFile::string(*plist, "CFBundleExecutable").value_or(QString());
    if (!executable.isEmpty())
        info.executablePath =
            contents + (modern ? QStringLiteral("/MacOS/") : QStringLiteral("/")) + executable;
    const auto libraries = plist->Find("OSBundleLibraries");
    if (libraries != plist->End() && libraries->second &&
        libraries->second->GetType() == PLIST_DICT) {
        const auto *dict = static_cast<const PList::Dictionary *>(libraries->second);
        for (auto it = dict->Begin(); it != dict->End(); ++it) {
            QString version;
            if (it->second && it->second->GetType() == PLIST_STRING)
                version =
                    QString::fromStdString(static_cast<PList::String *>(it->second)->GetValue());
            info.libraries.append({QString::fromStdString(it->first), version});
        }
    }
    return info;
}

QMap<QString, QString> KextBundleInfo::index(const QString &folder) {
    QMap<QString, QString> kexts;
    QDirIterator it(folder, {QStringLiteral("*.kext")}, QDir::Dirs | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        if (const std::optional<KextBundleInfo> info = read(path);
            info && !kexts.contains(info->identifier))
            kexts.insert(info->identifier, path);
    }
    return kexts;
}

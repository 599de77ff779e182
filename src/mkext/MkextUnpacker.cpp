#include "mkext/MkextUnpacker.h"

#include "mkext/BundleNamer.h"
#include "mkext/OrderedWork.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cstdlib>

namespace {

bool writeNew(const QString &path, const QByteArray &bytes, QFileDevice::Permissions mode) {
    QFile file(path);
    // NewOnly: never follow or replace something placed there meanwhile.
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        return false;
    const bool written = file.write(bytes) == bytes.size();
    file.close();
    return written && file.setPermissions(mode) && file.error() == QFileDevice::NoError;
}

QByteArray infoPlistText(const MkextArchive::Kext &kext) {
    char *xml = nullptr;
    uint32_t length = 0;
    plist_to_xml(kext.info.get(), &xml, &length);
    const QByteArray text(xml, qsizetype(length));
    free(xml);
    return text;
}

} // namespace

QString MkextUnpacker::unpack(const MkextArchive &archive, const QString &folder) {
    const QString root = QDir::cleanPath(QFileInfo(folder).absoluteFilePath());
    if (!QFileInfo(root).isDir())
        return QStringLiteral("Directory %1 doesn't exist.").arg(folder);
    const auto readOnly = QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                          QFileDevice::ReadGroup | QFileDevice::ReadOther;
    const auto runnable =
        readOnly | QFileDevice::ExeOwner | QFileDevice::ExeGroup | QFileDevice::ExeOther;
    BundleNamer names(root);
    // Executables are decoded a few ahead on the thread pool while this thread writes.
    const QList<MkextArchive::Kext> &kexts = archive.kexts();
    OrderedWork<std::optional<QByteArray>> decoded(kexts.size(), [&archive, &kexts](qsizetype i) {
        return kexts[i].hasExecutable ? archive.executable(kexts[i]) : std::nullopt;
    });
    for (const MkextArchive::Kext &kext : kexts) {
        const QString bundle = root + QLatin1Char('/') + names.next(MkextArchive::kextName(kext));
        // The name is one component by construction; checked again because a mistake
        // here would write outside the folder the user chose.
        if (QFileInfo(bundle).absolutePath() != root)
            return archive.damagedText();
        const QString contents = bundle + QStringLiteral("/Contents");
        if (!QDir().mkdir(bundle) || !QDir().mkdir(contents))
            return QStringLiteral("Can't create directory %1.").arg(bundle);
        if (!writeNew(contents + QStringLiteral("/Info.plist"), infoPlistText(kext), readOnly))
            return QStringLiteral("Can't write file %1/Info.plist.").arg(contents);
        const std::optional<QByteArray> code = decoded.next();
        if (!kext.hasExecutable)
            continue;
        if (!code)
            return archive.damagedText();
        const QString macos = contents + QStringLiteral("/MacOS");
        const QString path = macos + QLatin1Char('/') + MkextArchive::executableName(kext);
        if (!QDir().mkdir(macos))
            return QStringLiteral("Can't create directory %1.").arg(macos);
        if (!writeNew(path, *code, runnable))
            return QStringLiteral("Can't write file %1.").arg(path);
    }
    return QString();
}

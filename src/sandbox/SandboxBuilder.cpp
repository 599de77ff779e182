#include "sandbox/SandboxBuilder.h"

#include "inspect/MachOWriter.h"
#include "mkext/MkextBuiltinTool.h"
#include "plist/PlistFile.h"
#include "sandbox/LoadedKextState.h"
#include "sandbox/MkextToolsStandIn.h"
#include "sandbox/SandboxCatalog.h"
#include "sandbox/SandboxOwners.h"
#include "sandbox/StandInScripts.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

QByteArray executableFor(SandboxKext::Binary binary) {
    switch (binary) {
    case SandboxKext::Binary::Fat:
        return MachOWriter::fat({MachOWriter::kextSlice(MachOWriter::X86_64),
                                 MachOWriter::kextSlice(MachOWriter::I386)});
    case SandboxKext::Binary::I386:
        return MachOWriter::thin(MachOWriter::kextSlice(MachOWriter::I386));
    case SandboxKext::Binary::X86_64:
        return MachOWriter::thin(MachOWriter::kextSlice(MachOWriter::X86_64));
    case SandboxKext::Binary::Ppc:
        return MachOWriter::thin(MachOWriter::kextSlice(MachOWriter::PPC));
    case SandboxKext::Binary::None:
        break;
    }
    return {};
}

PlistPtr infoPlist(const SandboxKext &kext) {
    PlistPtr dict(plist_new_dict());
    const auto put = [&dict](const char *key, const QString &value) {
        PlistFile::putString(dict.get(), key, value);
    };
    put("CFBundleDevelopmentRegion", QStringLiteral("English"));
    if (kext.binary != SandboxKext::Binary::None)
        put("CFBundleExecutable", kext.name());
    put("CFBundleIdentifier", kext.identifier);
    put("CFBundleInfoDictionaryVersion", QStringLiteral("6.0"));
    put("CFBundleName", kext.name());
    put("CFBundlePackageType", QStringLiteral("KEXT"));
    put("CFBundleShortVersionString", kext.version);
    put("CFBundleSignature", QStringLiteral("????"));
    put("CFBundleVersion", kext.version);
    if (!kext.compatibleVersion.isEmpty())
        put("OSBundleCompatibleVersion", kext.compatibleVersion);
    if (!kext.libraries.isEmpty()) {
        plist_t libraries = plist_new_dict();
        for (const auto &library : kext.libraries)
            PlistFile::putString(libraries, library.first.toUtf8().constData(), library.second);
        plist_dict_set_item(dict.get(), "OSBundleLibraries", libraries);
    }
    if (kext.bootRequired)
        put("OSBundleRequired", QStringLiteral("Root"));
    return dict;
}

bool writeFile(const QString &path, const QByteArray &bytes) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
           file.write(bytes) == bytes.size();
}

// Modes as an installer leaves them, whatever the umask of whoever makes the sandbox.
void normalizeModes(const QString &folder) {
    QDirIterator it(folder, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QFileInfo info = it.nextFileInfo();
        if (info.isSymLink())
            continue;
        const bool executable = info.isDir() || info.permission(QFile::ExeOwner);
        ::chmod(QFile::encodeName(info.filePath()).constData(), executable ? 0755 : 0644);
    }
}

void setModified(const QString &path, time_t when) {
    const struct timespec times[2] = {{0, UTIME_OMIT}, {when, 0}};
    ::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0);
}

time_t modified(const QString &path) {
    struct stat st;
    return ::stat(QFile::encodeName(path).constData(), &st) == 0 ? st.st_mtime : 0;
}

} // namespace

SandboxBuilder::SandboxBuilder(const QString &root, const QString &binary)
    : m_root(QDir::cleanPath(QDir(root).absolutePath())), m_binary(binary) {}

bool SandboxBuilder::fail(const QString &message) {
    m_error = message;
    return false;
}

bool SandboxBuilder::create() {
    const QDir root(m_root);
    if (root.exists() && !root.isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden))
        return fail(
            QStringLiteral("%1 is not empty; a sandbox is only made in a new folder.").arg(m_root));
    if (!makeFolders() || !writeKexts(false) ||
        !writeSystemVersion(QString(), QStringLiteral("10.6.8"), QStringLiteral("10K549")) ||
        !writeSystemVersion(QStringLiteral("/Volumes/") + SandboxCatalog::lionVolume(),
                            QStringLiteral("10.7.4"), QStringLiteral("11E53")))
        return false;
    if (!LoadedKextState(m_root).write(LoadedKextState::initial()))
        return fail(QStringLiteral("Can't write the loaded kext list below %1.").arg(m_root));
    StandInScripts scripts(m_root, m_binary);
    if (!scripts.writeAll())
        return fail(scripts.error());
    for (const QString &folder : {QStringLiteral("/System"), QStringLiteral("/Extra"),
                                  QStringLiteral("/Volumes/Lion Backup/System"),
                                  QStringLiteral("/Volumes/Lion Backup/Extra")})
        normalizeModes(m_root + folder);
    // The Extra mkext was built an hour before the last kexts were copied in.
    const QString extensions = m_root + QStringLiteral("/Extra/Extensions");
    setModified(extensions, modified(extensions) - 3600);
    buildExtraMkext();
    if (!writeKexts(true) || !applyFlaws())
        return false;
    buildStartupCache();
    return true;
}

bool SandboxBuilder::makeFolders() {
    for (const QString &folder :
         {QStringLiteral("/Volumes"), QStringLiteral("/var/db"), QStringLiteral("/var/log"),
          QStringLiteral("/Extra/Extensions"), QStringLiteral("/Extra/10.6/Extensions"),
          QStringLiteral("/Volumes/Lion Backup/Extra/KextStore"),
          QStringLiteral("/Volumes/Data/Documents"),
          QStringLiteral("/System/Library/Caches/com.apple.kext.caches/Startup")}) {
        if (!QDir().mkpath(m_root + folder))
            return fail(QStringLiteral("Can't make the folder %1.").arg(m_root + folder));
    }
    // The started system shows up among the volumes as a link to the root itself.
    const QString startup = m_root + QStringLiteral("/Volumes/") + SandboxCatalog::startedVolume();
    if (::symlink("..", QFile::encodeName(startup).constData()) != 0)
        return fail(QStringLiteral("Can't link %1 to the root.").arg(startup));
    writeFile(m_root + QStringLiteral("/Volumes/Data/Documents/Read me.txt"),
              "A volume without a system or an Extra folder: the volume lists leave it out.\n");
    return true;
}

bool SandboxBuilder::writeKexts(bool later) {
    for (const SandboxKext &kext : SandboxCatalog::kexts()) {
        if (kext.addedLater != later)
            continue;
        const QString plist = m_root + QLatin1Char('/') + kext.infoPlistPath();
        QDir().mkpath(QFileInfo(plist).path());
        if (!PlistFile::writeDictionary(plist, infoPlist(kext).get()))
            return fail(QStringLiteral("Can't write %1.").arg(plist));
        if (kext.binary == SandboxKext::Binary::None ||
            kext.flaw == SandboxKext::Flaw::MissingExecutable)
            continue;
        const QString executable = m_root + QLatin1Char('/') + kext.executablePath();
        if (!writeFile(executable, executableFor(kext.binary)))
            return fail(QStringLiteral("Can't write %1.").arg(executable));
        QFile::setPermissions(executable, QFile::permissions(executable) | QFile::ExeOwner |
                                              QFile::ExeGroup | QFile::ExeOther);
    }
    return true;
}

bool SandboxBuilder::writeSystemVersion(const QString &volume, const QString &version,
                                        const QString &build) {
    const PlistPtr dict(plist_new_dict());
    PlistFile::putString(dict.get(), "ProductBuildVersion", build);
    PlistFile::putString(dict.get(), "ProductCopyright", QStringLiteral("1983-2012 Sandbox Mac"));
    PlistFile::putString(dict.get(), "ProductName", QStringLiteral("Mac OS X"));
    PlistFile::putString(dict.get(), "ProductUserVisibleVersion", version);
    PlistFile::putString(dict.get(), "ProductVersion", version);
    const QString folder = m_root + volume + QStringLiteral("/System/Library/CoreServices");
    QDir().mkpath(folder);
    if (!PlistFile::writeDictionary(folder + QStringLiteral("/SystemVersion.plist"), dict.get()))
        return fail(QStringLiteral("Can't write the system version in %1.").arg(folder));
    return true;
}

bool SandboxBuilder::applyFlaws() {
    using Flaw = SandboxKext::Flaw;
    SandboxOwners owners(m_root);
    for (const SandboxKext &kext : SandboxCatalog::kexts()) {
        const QString bundle = m_root + QLatin1Char('/') + kext.path;
        const QString executable = m_root + QLatin1Char('/') + kext.executablePath();
        switch (kext.flaw) {
        case Flaw::ForeignOwner: // as a kext copied in by a user in the Finder
            owners.set(bundle, {501, 20}, true);
            break;
        case Flaw::GroupWritable:
            ::chmod(QFile::encodeName(executable).constData(), 0775);
            break;
        case Flaw::InnerLink:
            QDir().mkpath(bundle + QStringLiteral("/Contents/Resources"));
            if (::symlink(
                    "../Info.plist",
                    QFile::encodeName(bundle + QStringLiteral("/Contents/Resources/Info.plist"))
                        .constData()) != 0)
                return fail(QStringLiteral("Can't make a link in %1.").arg(bundle));
            break;
        case Flaw::BrokenInfoPlist:
            writeFile(m_root + QLatin1Char('/') + kext.infoPlistPath(),
                      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n"
                      "<dict>\n\t<key>CFBundleIdentifier</key>\n\t<string>" +
                          kext.identifier.toUtf8() + "\n");
            break;
        case Flaw::None:
        case Flaw::MissingExecutable: // never written
        case Flaw::MissingLibrary:    // in its Info.plist already
            break;
        }
    }
    // Everything else counts as root's; the stand-in chown keeps this record.
    if (!owners.save())
        return fail(QStringLiteral("Can't write %1.").arg(SandboxOwners::recordPath(m_root)));
    return true;
}

void SandboxBuilder::buildStartupCache() {
    // The system's startup mkext, built a day before S/L/E last changed.
    const QString sle = m_root + QStringLiteral("/System/Library/Extensions");
    const QString cache =
        m_root +
        QStringLiteral("/System/Library/Caches/com.apple.kext.caches/Startup/Extensions.mkext");
    MkextBuiltinTool::build(cache, sle, {});
    if (QFileInfo::exists(cache))
        setModified(cache, modified(sle) - 86400);
    else
        m_warnings << QStringLiteral("The startup mkext was not built.");
}

void SandboxBuilder::buildExtraMkext() {
    const QString extra = m_root + QStringLiteral("/Extra");
    const StandInResult built =
        MkextToolsStandIn(m_root, m_binary)
            .kextcache({QStringLiteral("-a"), QStringLiteral("i386"), QStringLiteral("-a"),
                        QStringLiteral("x86_64"), QStringLiteral("-m"),
                        extra + QStringLiteral("/Extensions.mkext"),
                        extra + QStringLiteral("/Extensions")});
    if (built.status != 0 || !QFileInfo::exists(extra + QStringLiteral("/Extensions.mkext")))
        m_warnings << QStringLiteral("Extra/Extensions.mkext was not built: %1")
                          .arg(QString::fromUtf8(built.err).trimmed());
}

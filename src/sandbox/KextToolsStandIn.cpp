#include "sandbox/KextToolsStandIn.h"

#include "inspect/MachODescriber.h"
#include "sandbox/KextBundleInfo.h"

#include <QFileInfo>
#include <algorithm>

namespace {

const QString notAKext = QStringLiteral("(libkern/kext) not a kext");
const QString notLoadable = QStringLiteral("(libkern/kext) not loadable (reason unspecified)");
const QString validation = QStringLiteral("(libkern/kext) validation failure (plist/executable)");
const QString dependencies = QStringLiteral("(libkern/kext) dependency resolution failure");

// The bundle path is the last word; options before it are accepted and ignored.
QString lastWord(const QStringList &args) {
    return args.isEmpty() ? QString() : args.last();
}

} // namespace

KextToolsStandIn::KextToolsStandIn(const QString &root) : m_root(root), m_state(root) {}

QString KextToolsStandIn::systemExtensions() const {
    return m_root + QStringLiteral("/System/Library/Extensions");
}

StandInResult KextToolsStandIn::kextstat(const QStringList &) const {
    return {LoadedKextState::kextstatText(m_state.read()).toUtf8(), {}, 0};
}

QString KextToolsStandIn::loadWithLibraries(QList<LoadedKext> &kexts, const QString &path,
                                            int depth) const {
    const std::optional<KextBundleInfo> info = KextBundleInfo::read(path);
    if (!info)
        return notAKext;
    if (LoadedKextState::find(kexts, info->identifier))
        return {};
    if (!info->executablePath.isEmpty()) {
        if (!QFileInfo(info->executablePath).isFile())
            return validation;
        // The sandbox kernel is 64-bit: a kext without an x86_64 slice can't load.
        if (!MachODescriber::describe(info->executablePath).contains(QLatin1String("x86_64")))
            return notLoadable;
    }
    QStringList libraries;
    QMap<QString, QString> available;
    for (const auto &library : info->libraries) {
        libraries << library.first;
        if (LoadedKextState::find(kexts, library.first))
            continue;
        if (available.isEmpty())
            available = KextBundleInfo::index(systemExtensions());
        if (depth > 16 || !available.contains(library.first) ||
            !loadWithLibraries(kexts, available.value(library.first), depth + 1).isEmpty())
            return dependencies;
    }
    LoadedKextState::load(kexts, info->identifier, info->version, libraries);
    return {};
}

StandInResult KextToolsStandIn::kextload(const QStringList &args) const {
    const QString path = lastWord(args);
    if (path.isEmpty() || path.startsWith(QLatin1Char('-')))
        return StandInResult::failure(QStringLiteral("No kernel extensions specified; name kernel "
                                                     "extension bundles\n    following the -- "
                                                     "option or as command-line arguments.\n"));
    QList<LoadedKext> kexts = m_state.read();
    const QString reason = loadWithLibraries(kexts, path, 0);
    if (!reason.isEmpty())
        return StandInResult::failure(path + QStringLiteral(" failed to load - ") + reason +
                                      QStringLiteral("; check the system/kernel logs for errors "
                                                     "or try kextutil(8).\n"));
    m_state.write(kexts);
    return {};
}

StandInResult KextToolsStandIn::kextunload(const QStringList &args) const {
    QString identifier;
    const qsizetype byId = args.indexOf(QStringLiteral("-b"));
    if (byId >= 0 && byId + 1 < args.size()) {
        identifier = args.at(byId + 1);
    } else {
        const QString path = lastWord(args);
        const std::optional<KextBundleInfo> info = KextBundleInfo::read(path);
        if (!info)
            return StandInResult::failure(QStringLiteral("Failed to unload ") + path +
                                          QStringLiteral(" - ") + notAKext + QStringLiteral(".\n"));
        identifier = info->identifier;
    }
    QList<LoadedKext> kexts = m_state.read();
    const LoadedKext *loaded = LoadedKextState::find(kexts, identifier);
    if (!loaded)
        return StandInResult::failure(QStringLiteral("Failed to unload ") + identifier +
                                      QStringLiteral(" - (libkern/kext) not found.\n"));
    // A kext that others link against, or that is part of the kernel, stays.
    if (loaded->refs > 0 || loaded->address == 0)
        return StandInResult::failure(QStringLiteral("Failed to unload ") + identifier +
                                      QStringLiteral(" - (libkern/kext) kext is in use or "
                                                     "retained (cannot unload).\n"));
    LoadedKextState::unload(kexts, identifier);
    m_state.write(kexts);
    return {};
}

StandInResult KextToolsStandIn::kextlibs(const QStringList &args) const {
    const QString path = lastWord(args);
    const std::optional<KextBundleInfo> info = KextBundleInfo::read(path);
    if (!info)
        return StandInResult::failure(QStringLiteral("Can't open %1.\n").arg(path));
    const QMap<QString, QString> available = KextBundleInfo::index(systemExtensions());
    QList<QPair<QString, QString>> libraries = info->libraries;
    std::sort(libraries.begin(), libraries.end());
    StandInResult result;
    result.err = "For all architectures:\n";
    int missing = 0;
    for (const auto &library : libraries) {
        const std::optional<KextBundleInfo> found =
            available.contains(library.first) ? KextBundleInfo::read(available.value(library.first))
                                              : std::nullopt;
        if (!found) {
            ++missing;
            continue;
        }
        result.out += "    " + library.first.toUtf8() + " = " + found->version.toUtf8() + '\n';
    }
    if (result.out.isEmpty())
        result.out = "    No libraries found.\n";
    if (missing > 0)
        result.err += "For x86_64:\n    " + QByteArray::number(missing * 3) +
                      " symbols not found in any library kext.\n";
    result.err += '\n';
    return result;
}

#include "inspect/ArchitectureProbe.h"

#include "inspect/MachODescriber.h"

#include <QFileInfo>

namespace {
// Foo.kext -> Foo: the last path component without its extension.
QString executableName(const QString &kextPath) {
    QString name = kextPath.section(QLatin1Char('/'), -1, -1, QString::SectionSkipEmpty);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    if (dot > 0)
        name.truncate(dot);
    return name;
}

bool exists(const QString &path) {
    // Links are followed: a link whose target is gone is not an executable to describe,
    // and must not replace a description found in Contents/MacOS.
    return QFileInfo::exists(path);
}

bool contains(const QString &text, const char *marker) {
    return text.contains(QLatin1String(marker));
}
} // namespace

ArchitectureProbe::ArchitectureProbe(Describer describer)
    : m_describer(describer ? std::move(describer) : Describer(&MachODescriber::describe)) {}

QString ArchitectureProbe::contentsExecutable(const QString &kextPath) {
    return kextPath + QStringLiteral("/Contents/MacOS/") + executableName(kextPath);
}

QString ArchitectureProbe::topLevelExecutable(const QString &kextPath) {
    return kextPath + QLatin1Char('/') + executableName(kextPath);
}

QString ArchitectureProbe::probeText(const QString &kextPath) const {
    QString text;
    // Only the folder is tested: a missing executable inside it is described as such.
    if (exists(kextPath + QStringLiteral("/Contents/MacOS")))
        text = m_describer(contentsExecutable(kextPath));
    if (exists(topLevelExecutable(kextPath)))
        text = m_describer(topLevelExecutable(kextPath));
    return text;
}

ArchitectureProbe::Architectures ArchitectureProbe::checkPageMarkers(const QString &text) {
    Architectures found;
    found.x86_64 = contains(text, "(for architecture x86_64)") || contains(text, "Mach-O 64-bit");
    found.i386 = contains(text, "(for architecture i386)") || contains(text, "Mach-O object i386");
    found.ppc = contains(text, "(for architecture ppc)") || contains(text, "Mach-O object ppc");
    found.ppc64 =
        contains(text, "(for architecture ppc64)") || contains(text, "Mach-O object ppc64");
    return found;
}

ArchitectureProbe::Architectures ArchitectureProbe::loadedKextMarkers(const QString &text) {
    const Architectures all = checkPageMarkers(text);
    Architectures found;
    found.x86_64 = all.x86_64;
    found.i386 = all.i386;
    return found;
}

QString ArchitectureProbe::reportCell(const QString &text) {
    QString cell;
    cell += contains(text, "x86_64") ? QStringLiteral("x86_64 ") : QString(7, ' ');
    cell += contains(text, "i386") ? QStringLiteral("i386 ") : QString(5, ' ');
    cell += contains(text, "ppc") ? QStringLiteral("ppc ") : QString(5, ' ');
    return cell;
}

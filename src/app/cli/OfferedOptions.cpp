#include "cli/OfferedOptions.h"

#include "volumes/KextFolders.h"

namespace {
QString lacks(const QString &option, const QString &volume, const QString &folders) {
    return QStringLiteral("%1: volume %2 has no %3").arg(option, volume, folders);
}
} // namespace

QString OfferedOptions::sle(const QString &option, const QString &volume, const QString &rp) {
    if (KextFolders(rp).slePresent())
        return {};
    return lacks(option, volume, QStringLiteral("System/Library/Extensions"));
}

QString OfferedOptions::version(const QString &volume, const QString &rp, const QString &version) {
    const qsizetype index = KextFolders::versions().indexOf(version);
    if (version.isEmpty() || (index >= 0 && KextFolders(rp).versionFolders().at(index)))
        return {};
    return lacks(QStringLiteral("--extra-version ") + version, volume,
                 QStringLiteral("Extra/") + version);
}

QString OfferedOptions::extra(const QString &option, const QString &volume, const QString &rp,
                              const QString &version) {
    if (KextFolders(rp, version).extraPresent())
        return {};
    const QString base =
        version.isEmpty() ? QStringLiteral("Extra/") : QStringLiteral("Extra/%1/").arg(version);
    return lacks(option, volume, QStringLiteral("%1Extensions or %1KextStore").arg(base));
}

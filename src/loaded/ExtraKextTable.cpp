#include "loaded/ExtraKextTable.h"

#include "exec/Tr.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>

namespace {
// Every name in a folder, hidden ones included, in a stable order.
QStringList listing(const QString &folder) {
    return QDir(folder).entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

QString pluginsCell(const QString &kext) {
    const QString plugins = kext + QStringLiteral("/Contents/PlugIns");
    if (!QFileInfo::exists(plugins))
        return QString();
    QString cell;
    for (const QString &name : listing(plugins))
        cell += name + QLatin1Char(' ');
    return cell;
}
} // namespace

QString ExtraKextTable::bothFoldersMessage() {
    return kkTr("Both Extra/Extensions and Extra/KextStore found.");
}

std::optional<QString> ExtraKextTable::section(const SystemPaths &paths) {
    const QString extensions = paths.system(QStringLiteral("/Extra/Extensions"));
    const QString kextStore = paths.system(QStringLiteral("/Extra/KextStore"));
    const bool hasExtensions = QFileInfo::exists(extensions);
    const bool hasKextStore = QFileInfo::exists(kextStore);
    if (hasExtensions && hasKextStore)
        return std::nullopt;

    QStringList names{QStringLiteral("Kext Name:")};
    QStringList plugins{QStringLiteral("Plugins:")};
    if (hasExtensions || hasKextStore) {
        const QString base = hasKextStore ? kextStore : extensions;
        names << listing(base);
        names.removeAll(QStringLiteral(".DS_Store"));
        for (qsizetype i = 1; i < names.size(); ++i)
            plugins << pluginsCell(base + QLatin1Char('/') + names.at(i));
    }

    qsizetype width = 0;
    for (const QString &name : names)
        width = qMax(width, name.size());
    QString text = QStringLiteral("3. /Extra Kexts:\n");
    for (qsizetype i = 0; i < names.size(); ++i) {
        text += names.at(i) + QString(width + 4 - names.at(i).size(), QLatin1Char(' ')) +
                plugins.at(i) + QLatin1Char('\n');
    }
    return text;
}

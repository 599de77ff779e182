#include "loaded/LoadedKextRows.h"

#include "inspect/ArchitectureProbe.h"
#include "loaded/KextStatText.h"

namespace {
qsizetype widest(const QStringList &first, const QStringList &second) {
    qsizetype width = 0;
    for (const QStringList *column : {&first, &second}) {
        for (const QString &value : *column)
            width = qMax(width, value.size());
    }
    return width;
}

QString padded(const QString &value, qsizetype width) {
    return value + QString(width + 2 - value.size(), QLatin1Char(' '));
}
} // namespace

LoadedKextRows LoadedKextRows::build(const QString &kextstatOutput, Half half,
                                     const PathLookup &pathOf, const Probe &probe) {
    const QStringList lines = kextstatOutput.split(QLatin1Char('\n'));
    const qsizetype count = lines.size();
    LoadedKextRows rows;
    qsizetype from = count / 2;
    qsizetype to = count - 1;
    if (half == Half::First) {
        rows.names << QStringLiteral("Kext Name:");
        rows.versions << QStringLiteral("Version:");
        rows.paths << QStringLiteral("Path:");
        rows.architectures << QStringLiteral("Architectures:");
        from = 1;
        to = count / 2;
    }
    const qsizetype column = kextStatNameColumn(lines.first());
    for (qsizetype i = from; i < to; ++i) {
        const KextRowParts parts = kextRowParts(kextRowText(lines.at(i), column));
        const QString path = pathOf(parts.identifier);
        rows.names << parts.identifier;
        rows.versions << parts.version;
        rows.paths << path;
        rows.architectures << (path.isEmpty() ? QString()
                                              : ArchitectureProbe::reportCell(probe(path)));
    }
    return rows;
}

QString LoadedKextRows::section(const LoadedKextRows &first, const LoadedKextRows &second) {
    const qsizetype nameWidth = widest(first.names, second.names);
    const qsizetype versionWidth = widest(first.versions, second.versions);
    const qsizetype pathWidth = widest(first.paths, second.paths);
    QString text = QStringLiteral("\n4. Loaded Kexts:\n");
    for (const LoadedKextRows *rows : {&first, &second}) {
        for (qsizetype i = 0; i < rows->names.size(); ++i) {
            text += padded(rows->names.at(i), nameWidth) +
                    padded(rows->versions.at(i), versionWidth) +
                    padded(rows->paths.at(i), pathWidth) + rows->architectures.at(i) +
                    QLatin1Char('\n');
        }
    }
    return text;
}

#include "loaded/KextStatText.h"

namespace {
const QString nameHeader = QStringLiteral("Name (Version)");
const QString linkedMark = QStringLiteral(" <");
const QString versionMark = QStringLiteral(" (");
} // namespace

qsizetype kextStatNameColumn(const QString &header) {
    return qMax<qsizetype>(header.indexOf(nameHeader), 0);
}

QString kextRowText(const QString &line, qsizetype nameColumn) {
    QString row = line.mid(nameColumn);
    const qsizetype linked = row.indexOf(linkedMark);
    if (linked >= 0)
        row.truncate(linked);
    return row;
}

QStringList kextStatRows(const QString &output) {
    const QStringList lines = output.split(QLatin1Char('\n'));
    QStringList rows;
    if (lines.size() < 3)
        return rows;
    const qsizetype column = kextStatNameColumn(lines.first());
    for (qsizetype i = 1; i < lines.size() - 1; ++i)
        rows << kextRowText(lines.at(i), column);
    return rows;
}

QString kextRowIdentifier(const QString &row) {
    const qsizetype mark = row.indexOf(versionMark);
    return mark < 0 ? row : row.left(mark);
}

KextRowParts kextRowParts(const QString &row) {
    const qsizetype mark = row.indexOf(versionMark);
    if (mark < 0)
        return {row, QString()};
    const qsizetype start = mark + versionMark.size();
    const qsizetype end = row.indexOf(QLatin1Char(')'), start);
    return {row.left(mark), end < 0 ? row.mid(start) : row.mid(start, end - start)};
}

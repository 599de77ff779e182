#include "loaded/ReportOverview.h"

#include <QStringList>

namespace {
constexpr qsizetype softwareHeading = 41;
constexpr qsizetype hardwareHeading = 34;
constexpr qsizetype computerNameLine = 5;
constexpr qsizetype computerNameLabel = 21;
// Dropped from the report so that it can be shared without personal details: the user's
// name, then (counted in the shortened list) the time since start-up.
constexpr qsizetype userNameLine = 6;
constexpr qsizetype uptimeLine = 8;

QStringList softwareLines(const QString &softwareOverview) {
    return softwareOverview.mid(softwareHeading).split(QLatin1Char('\n'));
}

void removeLine(QStringList &lines, qsizetype index) {
    if (index < lines.size())
        lines.removeAt(index);
}
} // namespace

QString ReportOverview::defaultFileName(const QString &softwareOverview) {
    const QStringList lines = softwareLines(softwareOverview);
    return lines.value(computerNameLine).mid(computerNameLabel);
}

QString ReportOverview::sections(const QString &softwareOverview, const QString &hardwareOverview) {
    QString text = QStringLiteral("1. Software Info:");
    QStringList lines = softwareLines(softwareOverview);
    removeLine(lines, userNameLine);
    removeLine(lines, uptimeLine);
    // The first kept piece is the blank line after the heading: its newline ends the
    // section's own heading line. The last piece follows the final newline.
    if (lines.size() != 1) {
        for (qsizetype i = 0; i + 1 < lines.size(); ++i)
            text += lines.at(i) + QLatin1Char('\n');
    }
    text += QStringLiteral("2. Hardware Info:") + hardwareOverview.mid(hardwareHeading);
    text.replace(QString(6, QLatin1Char(' ')), QString());
    return text;
}

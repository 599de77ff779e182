#include "loaded/LoadedArchitectures.h"

LoadedArchitectures LoadedArchitectures::fromProbe(const QString &probeText) {
    LoadedArchitectures result;
    result.x86_64 = probeText.contains(QLatin1String("(for architecture x86_64)")) ||
                    probeText.contains(QLatin1String("Mach-O 64-bit"));
    result.i386 = probeText.contains(QLatin1String("(for architecture i386)")) ||
                  probeText.contains(QLatin1String("Mach-O object i386"));
    return result;
}

QString LoadedArchitectures::reportCell(const QString &probeText) {
    QString cell;
    cell += probeText.contains(QLatin1String("x86_64")) ? QStringLiteral("x86_64 ")
                                                        : QString(7, QLatin1Char(' '));
    cell += probeText.contains(QLatin1String("i386")) ? QStringLiteral("i386 ")
                                                      : QString(5, QLatin1Char(' '));
    cell += probeText.contains(QLatin1String("ppc")) ? QStringLiteral("ppc ")
                                                     : QString(5, QLatin1Char(' '));
    return cell;
}

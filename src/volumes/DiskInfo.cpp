#include "volumes/DiskInfo.h"

#include <QStringList>

bool diskInfoIsStartedSystem(const QString &diskutilOutput) {
    const QStringList lines = diskutilOutput.split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        if (!line.contains(QLatin1String("Mount Point:")))
            continue;
        if (line.size() < 29)
            return false;
        return line.mid(29) == QLatin1String("/");
    }
    return false;
}

#include "maintenance/OwnershipRepair.h"

#include "volumes/SystemPaths.h"

QList<Command> ownershipRepairCommands(const SystemPaths &paths, const QString &folder) {
    return {Command{paths.system(QStringLiteral("/usr/sbin/chown")),
                    {QStringLiteral("-R"), QStringLiteral("0:0"), folder},
                    true},
            Command{paths.system(QStringLiteral("/bin/chmod")),
                    {QStringLiteral("-R"), QStringLiteral("755"), folder},
                    true}};
}

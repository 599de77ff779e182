#include "doctor/DoctorFinding.h"

QString DoctorFinding::severityName(Severity severity) {
    return severity == Severity::Error ? QStringLiteral("error") : QStringLiteral("warning");
}

QString DoctorFinding::fixKey(Fix fix) {
    switch (fix) {
    case Fix::RepairExtra:
        return QStringLiteral("repair-extra");
    case Fix::RepairSle:
        return QStringLiteral("repair-sle");
    case Fix::RebuildExtraMkext:
        return QStringLiteral("rebuild-extra-mkext");
    case Fix::RebuildCaches:
        return QStringLiteral("rebuild-caches");
    case Fix::RemoveCopy:
        return QStringLiteral("remove-copy");
    case Fix::Reinstall:
        return QStringLiteral("reinstall");
    case Fix::EditInfoPlist:
        return QStringLiteral("edit-info-plist");
    }
    return {};
}

QString DoctorFinding::fixText(Fix fix) {
    switch (fix) {
    case Fix::RepairExtra:
        return QStringLiteral("repair Extra permissions (maintenance)");
    case Fix::RepairSle:
        return QStringLiteral("repair S/L/E permissions (maintenance)");
    case Fix::RebuildExtraMkext:
        return QStringLiteral("rebuild the Extra mkext (maintenance)");
    case Fix::RebuildCaches:
        return QStringLiteral("rebuild the system caches (maintenance)");
    case Fix::RemoveCopy:
        return QStringLiteral("remove this copy (it goes to Kext Backups, where restore finds it)");
    case Fix::Reinstall:
        return QStringLiteral("reinstall a good copy of the kext, or remove it");
    case Fix::EditInfoPlist:
        return QStringLiteral("add OSBundleRequired (Root) to its Info.plist");
    }
    return {};
}

bool DoctorFinding::isMaintenance(Fix fix) {
    return fix == Fix::RepairExtra || fix == Fix::RepairSle || fix == Fix::RebuildExtraMkext ||
           fix == Fix::RebuildCaches;
}

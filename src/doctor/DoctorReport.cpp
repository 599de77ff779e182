#include "doctor/DoctorReport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {
QString counted(int count, const char *one, const char *many) {
    return QStringLiteral("%1 %2").arg(count).arg(QLatin1String(count == 1 ? one : many));
}
} // namespace

QString DoctorReport::line(const DoctorFinding &finding) {
    return QStringLiteral("%1 %2 %3: %4; fix: %5")
        .arg(DoctorFinding::severityName(finding.severity), finding.id, finding.path, finding.text,
             DoctorFinding::fixText(finding.fix));
}

QString DoctorReport::summary(const KextDoctor::Result &result, const QString &volume) {
    using Severity = DoctorFinding::Severity;
    const QString version = result.systemVersion.isEmpty()
                                ? QString()
                                : QStringLiteral(" (%1)").arg(result.systemVersion);
    return QStringLiteral("%1 and %2 in %3 on %4%5.")
        .arg(counted(result.count(Severity::Error), "error", "errors"),
             counted(result.count(Severity::Warning), "warning", "warnings"),
             counted(result.kexts, "kext", "kexts"), volume, version);
}

QByteArray DoctorReport::json(const KextDoctor::Result &result, const QString &volume,
                              const QString &extraVersion) {
    QJsonArray findings;
    for (const DoctorFinding &finding : result.findings) {
        findings.append(QJsonObject{
            {QStringLiteral("severity"), DoctorFinding::severityName(finding.severity)},
            {QStringLiteral("id"), finding.id},
            {QStringLiteral("kext"), finding.kext},
            {QStringLiteral("path"), finding.path},
            {QStringLiteral("text"), finding.text},
            {QStringLiteral("fix"), DoctorFinding::fixKey(finding.fix)},
            {QStringLiteral("fixText"), DoctorFinding::fixText(finding.fix)},
        });
    }
    const QJsonObject document{
        {QStringLiteral("volume"), volume},
        {QStringLiteral("extraVersion"), extraVersion},
        {QStringLiteral("systemVersion"), result.systemVersion},
        {QStringLiteral("kexts"), result.kexts},
        {QStringLiteral("errors"), result.count(DoctorFinding::Severity::Error)},
        {QStringLiteral("warnings"), result.count(DoctorFinding::Severity::Warning)},
        {QStringLiteral("findings"), findings},
    };
    return QJsonDocument(document).toJson(QJsonDocument::Indented);
}

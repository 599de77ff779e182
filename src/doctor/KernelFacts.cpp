#include "doctor/KernelFacts.h"

KernelFacts::KernelFacts(const QString &productVersion) {
    const QStringList parts = productVersion.split(QLatin1Char('.'));
    bool ok = false;
    const int major = parts.value(0).toInt(&ok);
    if (!ok || major < 10)
        return;
    const int minor = parts.value(1).toInt(&ok);
    if (!ok || (major == 10 && minor < 4))
        return;
    m_major = major;
    m_minor = minor;
    m_patch = parts.size() > 2 ? parts.at(2).toInt() : 0;
}

QStringList KernelFacts::architectures() const {
    if (!known())
        return {};
    if (m_major == 10 && m_minor <= 5)
        return {QStringLiteral("i386")};
    if (m_major == 10 && m_minor <= 7)
        return {QStringLiteral("i386"), QStringLiteral("x86_64")};
    return {QStringLiteral("x86_64")};
}

QString KernelFacts::kernelVersion() const {
    if (!known())
        return {};
    if (m_major == 10)
        return QStringLiteral("%1.%2.0").arg(m_minor + 4).arg(m_patch);
    return QStringLiteral("%1.%2.0").arg(m_major + 9).arg(m_minor + 1);
}

#pragma once

#include <QString>
#include <QStringList>

// What a system version says about its kernel: the processors it may start on and its
// own version, which the kernel's programming interfaces (com.apple.kpi.*) carry.
class KernelFacts {
public:
    // "10.6.8"; anything unreadable leaves the facts unknown.
    explicit KernelFacts(const QString &productVersion);

    bool known() const { return m_major > 0; }
    // i386 for 10.4 and 10.5 (ppc is for Macs, not for the boot loader's PCs), i386 and
    // x86_64 for 10.6 and 10.7 (either kernel may start), x86_64 alone from 10.8 on.
    QStringList architectures() const;
    // The Darwin version: 10.6.8 runs 10.8.0, 10.7.4 runs 11.4.0, 11.2 runs 20.3.0.
    QString kernelVersion() const;

private:
    int m_major = 0;
    int m_minor = 0;
    int m_patch = 0;
};

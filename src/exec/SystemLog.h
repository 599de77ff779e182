#pragma once

#include <QByteArray>

// Where root sequences' output and launch failures are written. Production writes to
// syslog(3); tests record the entries.
class SystemLog {
public:
    virtual ~SystemLog() = default;
    virtual void write(const QByteArray &entry) = 0;

    static SystemLog &syslog();
};

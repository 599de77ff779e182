#include "exec/SystemLog.h"

#include <syslog.h>

namespace {
class Syslog final : public SystemLog {
public:
    void write(const QByteArray &entry) override {
        ::syslog(LOG_NOTICE, "%.*s", int(entry.size()), entry.constData());
    }
};
} // namespace

SystemLog &SystemLog::syslog() {
    static Syslog log;
    return log;
}

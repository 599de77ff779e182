#pragma once

#include "exec/Notifier.h"

#include <QDBusConnection>

// org.freedesktop.Notifications on the session bus; "running" means the name has an
// owner. Normal urgency, default expiry (not sticky), the kind in a hint of our own.
class FreedesktopNotifier final : public Notifier {
public:
    explicit FreedesktopNotifier(QDBusConnection bus = QDBusConnection::sessionBus());
    bool isRunning() override;
    void notify(const QString &title, const QString &description, const QString &name) override;

private:
    QDBusConnection m_bus;
};

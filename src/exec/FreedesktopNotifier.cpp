#include "exec/FreedesktopNotifier.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QVariantMap>

namespace {
const char *service = "org.freedesktop.Notifications";
}

FreedesktopNotifier::FreedesktopNotifier(QDBusConnection bus) : m_bus(std::move(bus)) {}

bool FreedesktopNotifier::isRunning() {
    if (!m_bus.isConnected() || !m_bus.interface())
        return false;
    return m_bus.interface()->isServiceRegistered(QLatin1String(service)).value();
}

void FreedesktopNotifier::notify(const QString &title, const QString &description,
                                 const QString &name) {
    QDBusMessage call = QDBusMessage::createMethodCall(
        QLatin1String(service), QStringLiteral("/org/freedesktop/Notifications"),
        QLatin1String(service), QStringLiteral("Notify"));
    QVariantMap hints;
    hints.insert(QStringLiteral("urgency"), QVariant::fromValue<uchar>(1));
    hints.insert(QStringLiteral("x-kextkeeper-notification"), name);
    // The installed desktop entry and icon (kextkeeper.desktop, hicolor "kextkeeper"), so
    // the desktop shows our icon and groups the messages under the application.
    hints.insert(QStringLiteral("desktop-entry"), QStringLiteral("kextkeeper"));
    call << QStringLiteral("KextKeeper") << uint(0) << QStringLiteral("kextkeeper") << title
         << description << QStringList() << hints << int(-1);
    // Fire and forget: a slow service must never hold up the end of a task.
    m_bus.asyncCall(call);
}

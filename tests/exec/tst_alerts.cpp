#include "RecordingSheets.h"
#include "exec/Alerts.h"
#include "exec/FreedesktopNotifier.h"
#include "exec/Notifier.h"

#include <QDBusConnection>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>
#include <QVariantMap>

namespace {
class RecordingNotifier final : public Notifier {
public:
    bool running = true;
    QStringList posted; // "title|description|name"
    bool isRunning() override { return running; }
    void notify(const QString &title, const QString &description, const QString &name) override {
        posted << QStringList{title, description, name}.join('|');
    }
};
} // namespace

// A notification service on a private bus: records what it is sent, as
// "summary|body|name|urgency|timeout".
class NotificationService : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")
public:
    QStringList received;
public slots:
    uint Notify(const QString &, uint, const QString &, const QString &summary, const QString &body,
                const QStringList &, const QVariantMap &hints, int timeout) {
        received << QStringList{summary, body, hints.value("x-kextkeeper-notification").toString(),
                                QString::number(hints.value("urgency").value<uchar>()),
                                QString::number(timeout)}
                        .join('|');
        return 1;
    }
};

class TestAlerts : public QObject {
    Q_OBJECT
private slots:
    // An error always gets a sheet; a success gets the notification alone when the service
    // runs, and a sheet when it doesn't.
    void combinationRule_data() {
        QTest::addColumn<bool>("serviceRuns");
        QTest::addColumn<bool>("error");
        QTest::addColumn<QStringList>("notifications");
        QTest::addColumn<QStringList>("sheets");
        const QString failed = QStringLiteral("Error|Mkext checksum error.|Task Failed");
        const QString errorSheet = QStringLiteral("error: Mkext checksum error.");
        const QString finished = QStringLiteral("Done|Selected tasks were finished.|Task Finished");
        const QString infoSheet = QStringLiteral("info: Selected tasks were finished.");
        QTest::newRow("error, service runs")
            << true << true << QStringList{failed} << QStringList{errorSheet};
        QTest::newRow("success, service runs")
            << true << false << QStringList{finished} << QStringList();
        QTest::newRow("error, no service")
            << false << true << QStringList() << QStringList{errorSheet};
        QTest::newRow("success, no service")
            << false << false << QStringList() << QStringList{infoSheet};
    }

    void combinationRule() {
        QFETCH(bool, serviceRuns);
        QFETCH(bool, error);
        QFETCH(QStringList, notifications);
        QFETCH(QStringList, sheets);
        RecordingNotifier notifier;
        notifier.running = serviceRuns;
        RecordingSheets presenter;
        Alerts alerts(&notifier, &presenter);
        if (error)
            alerts.showError("Mkext checksum error.", nullptr);
        else
            alerts.showInfo("Selected tasks were finished.", nullptr);
        QCOMPARE(notifier.posted, notifications);
        QCOMPARE(presenter.texts, sheets);
    }

    void desktopNotificationService() {
        const QString daemon = QStandardPaths::findExecutable("dbus-daemon");
        if (daemon.isEmpty())
            QSKIP("dbus-daemon is not installed");
        QProcess bus;
        bus.start(daemon, {"--session", "--nofork", "--print-address=1"});
        QVERIFY(bus.waitForReadyRead(5000));
        const QString address = QString::fromUtf8(bus.readLine()).trimmed();
        FreedesktopNotifier notifier(QDBusConnection::connectToBus(address, "client"));
        QVERIFY(!notifier.isRunning());

        // The notifier never waits for an answer, so the service can answer on our own thread.
        NotificationService service;
        QDBusConnection server = QDBusConnection::connectToBus(address, "server");
        QVERIFY(server.registerObject("/org/freedesktop/Notifications", &service,
                                      QDBusConnection::ExportAllSlots));
        QVERIFY(server.registerService("org.freedesktop.Notifications"));
        QVERIFY(notifier.isRunning());
        notifier.notify("Error", "It failed.", "Task Failed");
        QTRY_COMPARE(service.received, QStringList{"Error|It failed.|Task Failed|1|-1"});
        bus.terminate();
        bus.waitForFinished(3000);
    }
};

QTEST_GUILESS_MAIN(TestAlerts)
#include "tst_alerts.moc"

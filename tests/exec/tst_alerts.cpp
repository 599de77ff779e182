#include "exec/Alerts.h"
#include "exec/FreedesktopNotifier.h"
#include "exec/Notifier.h"
#include "exec/SheetPresenter.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>
#include <QThread>
#include <QVariantMap>

namespace {
// Keeps the kind, the headline and the words of each sheet: "error|HEADLINE|TEXT".
class RecordingSheets final : public SheetPresenter {
public:
    QStringList shown;
    void showSheet(Kind kind, const QString &headline, const QString &text, QObject *) override {
        shown << QStringList{kind == Kind::Error ? "error" : "info", headline, text}.join('|');
    }
};

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
    QAtomicInt count = 0;
public slots:
    uint Notify(const QString &, uint, const QString &, const QString &summary, const QString &body,
                const QStringList &, const QVariantMap &hints, int timeout) {
        received << QStringList{summary, body, hints.value("x-kextkeeper-notification").toString(),
                                QString::number(hints.value("urgency").value<uchar>()),
                                QString::number(timeout)}
                        .join('|');
        count.fetchAndAddOrdered(1);
        return 1;
    }
};

class TestAlerts : public QObject {
    Q_OBJECT
private slots:
    void combinationRule_data();
    void combinationRule();
    void desktopNotificationService();
};

// An error always gets a sheet; a success gets the notification alone when the service
// runs, and a sheet when it doesn't.
void TestAlerts::combinationRule_data() {
    QTest::addColumn<bool>("serviceRuns");
    QTest::addColumn<bool>("error");
    QTest::addColumn<QStringList>("notifications");
    QTest::addColumn<QStringList>("sheets");
    const QString failed = QStringLiteral("Error|Mkext checksum error.|Task Failed");
    const QString errorSheet = QStringLiteral("error|Error|Mkext checksum error.");
    const QString finished = QStringLiteral("Done|Selected tasks were finished.|Task Finished");
    const QString infoSheet = QStringLiteral("info|Done|Selected tasks were finished.");
    QTest::newRow("error, service runs")
        << true << true << QStringList{failed} << QStringList{errorSheet};
    QTest::newRow("success, service runs")
        << true << false << QStringList{finished} << QStringList();
    QTest::newRow("error, no service") << false << true << QStringList() << QStringList{errorSheet};
    QTest::newRow("success, no service")
        << false << false << QStringList() << QStringList{infoSheet};
}

void TestAlerts::combinationRule() {
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
    QCOMPARE(presenter.shown, sheets);
}

void TestAlerts::desktopNotificationService() {
    const QString daemon = QStandardPaths::findExecutable("dbus-daemon");
    if (daemon.isEmpty())
        QSKIP("dbus-daemon is not installed; the rule is covered by the recording notifier");
    QProcess bus;
    bus.start(daemon, {"--session", "--nofork", "--print-address=1"});
    QVERIFY(bus.waitForReadyRead(5000));
    const QString address = QString::fromUtf8(bus.readLine()).trimmed();
    QDBusConnection client = QDBusConnection::connectToBus(address, "client");
    QVERIFY(client.isConnected());

    FreedesktopNotifier notifier(client);
    RecordingSheets presenter;
    Alerts alerts(&notifier, &presenter);
    QVERIFY(!notifier.isRunning());
    alerts.showInfo("no service yet", nullptr);
    QCOMPARE(presenter.shown, QStringList{"info|Done|no service yet"});

    // The service answers on its own thread so the client's calls never wait on us.
    QThread serviceThread;
    serviceThread.start();
    NotificationService service;
    service.moveToThread(&serviceThread);
    QDBusConnection server = QDBusConnection::connectToBus(address, "server");
    QVERIFY(server.registerObject("/org/freedesktop/Notifications", &service,
                                  QDBusConnection::ExportAllSlots));
    QVERIFY(server.registerService("org.freedesktop.Notifications"));
    QTRY_VERIFY(notifier.isRunning());

    alerts.showInfo("Selected tasks were finished.", nullptr);
    alerts.showError("It failed.", nullptr);
    QTRY_COMPARE(service.count.loadAcquire(), 2);
    QCOMPARE(service.received, (QStringList{"Done|Selected tasks were finished.|Task Finished|1|-1",
                                            "Error|It failed.|Task Failed|1|-1"}));
    QCOMPARE(presenter.shown.size(), 2);

    server.unregisterService("org.freedesktop.Notifications");
    QDBusConnection::disconnectFromBus("server");
    QDBusConnection::disconnectFromBus("client");
    serviceThread.quit();
    serviceThread.wait();
    bus.terminate();
    bus.waitForFinished(3000);
}

QTEST_GUILESS_MAIN(TestAlerts)
#include "tst_alerts.moc"

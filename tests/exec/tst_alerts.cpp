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
struct Sheet {
    SheetPresenter::Kind kind;
    QString headline;
    QString text;
};

class RecordingSheets final : public SheetPresenter {
public:
    QList<Sheet> shown;
    void showSheet(Kind kind, const QString &headline, const QString &text, QObject *) override {
        shown << Sheet{kind, headline, text};
    }
};

class RecordingNotifier final : public Notifier {
public:
    bool running = true;
    QStringList posted; // "title|description|name"
    bool isRunning() override { return running; }
    void notify(const QString &title, const QString &description, const QString &name) override {
        posted << title + '|' + description + '|' + name;
    }
};
} // namespace

// A notification service on a private bus: records what it is sent.
class NotificationService : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")
public:
    QAtomicInt received = 0;
    QString lastSummary, lastBody, lastName;
    int lastTimeout = 0;
    uchar lastUrgency = 0;
public slots:
    uint Notify(const QString &, uint, const QString &, const QString &summary, const QString &body,
                const QStringList &, const QVariantMap &hints, int timeout) {
        lastSummary = summary;
        lastBody = body;
        lastName = hints.value("x-kextkeeper-notification").toString();
        lastUrgency = hints.value("urgency").value<uchar>();
        lastTimeout = timeout;
        received.fetchAndAddOrdered(1);
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

void TestAlerts::combinationRule_data() {
    QTest::addColumn<bool>("serviceRuns");
    QTest::addColumn<bool>("error");
    QTest::addColumn<int>("notifications");
    QTest::addColumn<int>("sheets");
    QTest::newRow("error, service runs") << true << true << 1 << 1;
    QTest::newRow("success, service runs") << true << false << 1 << 0;
    QTest::newRow("error, no service") << false << true << 0 << 1;
    QTest::newRow("success, no service") << false << false << 0 << 1;
}

void TestAlerts::combinationRule() {
    QFETCH(bool, serviceRuns);
    QFETCH(bool, error);
    QFETCH(int, notifications);
    QFETCH(int, sheets);
    RecordingNotifier notifier;
    notifier.running = serviceRuns;
    RecordingSheets presenter;
    Alerts alerts(&notifier, &presenter);
    if (error)
        alerts.showError("Mkext checksum error.", nullptr);
    else
        alerts.showInfo("Selected tasks were finished.", nullptr);
    QCOMPARE(notifier.posted.size(), notifications);
    QCOMPARE(presenter.shown.size(), sheets);
    const QString title = error ? "Error" : "Done";
    const QString name = error ? "Task Failed" : "Task Finished";
    if (notifications)
        QCOMPARE(notifier.posted.first(),
                 title + '|' + (error ? "Mkext checksum error." : "Selected tasks were finished.") +
                     '|' + name);
    if (sheets) {
        QCOMPARE(presenter.shown.first().headline, title);
        QCOMPARE(presenter.shown.first().kind,
                 error ? SheetPresenter::Kind::Error : SheetPresenter::Kind::Info);
    }
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
    QCOMPARE(presenter.shown.size(), 1);

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
    QTRY_COMPARE(service.received.loadAcquire(), 1);
    QCOMPARE(presenter.shown.size(), 1);
    QCOMPARE(service.lastSummary, QStringLiteral("Done"));
    QCOMPARE(service.lastBody, QStringLiteral("Selected tasks were finished."));
    QCOMPARE(service.lastName, QStringLiteral("Task Finished"));
    QCOMPARE(service.lastUrgency, uchar(1));
    QCOMPARE(service.lastTimeout, -1);

    alerts.showError("It failed.", nullptr);
    QTRY_COMPARE(service.received.loadAcquire(), 2);
    QCOMPARE(service.lastName, QStringLiteral("Task Failed"));
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

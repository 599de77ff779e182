#include "E2eSandbox.h"
#include "sandbox/LoadedKextState.h"

#include <QProcessEnvironment>

// The command-line verbs on a fresh sandbox with real processes all the way down: the
// command log must hold exactly the commands a Mac would have run, in order, the same
// ones the window runs for the same task (tst_e2ewindow).
class TestE2eCli : public QObject {
    Q_OBJECT

    struct Result {
        int status;
        QString out;
        QString err;
    };
    std::unique_ptr<E2eSandbox> m_mac;

    void start(const QString &fixedRoot = {}) {
        m_mac = std::make_unique<E2eSandbox>();
        QVERIFY(m_mac->create(fixedRoot));
    }

    // kextkeeper --root <sandbox> ARGS, with a home of the sandbox's own.
    Result kextkeeper(const QStringList &args) const {
        QProcess process;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(QStringLiteral("HOME"), m_mac->home());
        env.insert(QStringLiteral("XDG_CONFIG_HOME"), m_mac->home() + QStringLiteral("/config"));
        process.setProcessEnvironment(env);
        process.setStandardInputFile(QProcess::nullDevice());
        process.start(QStringLiteral(KK_BINARY),
                      QStringList{"--root", m_mac->sandbox.root()} + args);
        process.waitForFinished(60000);
        return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }

private slots:
    void maintenanceWithAllFourOptions_data() {
        QTest::addColumn<bool>("prelink");
        QTest::newRow("prelink off") << false;
        QTest::newRow("prelink on") << true;
    }

    void maintenanceWithAllFourOptions() {
        QFETCH(bool, prelink);
        start();
        QVERIFY(m_mac->writeSettings(prelink));
        const Result run =
            kextkeeper({"maintain", "--volume", "Macintosh HD", "--repair-extra",
                        "--rebuild-extra-mkext", "--repair-sle", "--rebuild-caches"});
        QCOMPARE(run.status, 0);
        QVERIFY(run.out.endsWith(QLatin1String("Selected tasks were finished.\n")));
        QCOMPARE(m_mac->sandbox.logLines(), m_mac->maintenanceCommands(prelink));
        QVERIFY(QFileInfo(m_mac->r(QStringLiteral("Extra/Extensions.mkext"))).size() > 0);
    }

    void installTwoKextsWithBackup() {
        start();
        const QStringList bundles = m_mac->makeBundlesToInstall();
        const Result run = kextkeeper(
            QStringList{"install", "--volume", "Macintosh HD", "--to", "extra", "--backup"} +
            bundles);
        QVERIFY2(run.status == 0, qPrintable(run.err));
        QCOMPARE(m_mac->sandbox.logLines(), m_mac->installCommands(bundles));
        QVERIFY(m_mac->installedWithBackup());
    }

    void convertToKextStore() {
        start();
        const Result run =
            kextkeeper({"extra", "to-kextstore", "--volume", "Macintosh HD", "--yes"});
        QVERIFY2(run.status == 0, qPrintable(run.err));
        QCOMPARE(m_mac->sandbox.logLines(), m_mac->kextStoreCommands());
        QVERIFY(m_mac->convertedToKextStore());
    }

    void testLoad_data() { E2eSandbox::testLoadRows(); }

    void testLoad() {
        QFETCH(QString, bundle);
        QFETCH(QString, identifier);
        QFETCH(QString, error);
        start();
        const QString k = m_mac->r(bundle);
        const Result run = kextkeeper({"load", k});
        QCOMPARE(run.status, error.isEmpty() ? 0 : 1);
        if (!error.isEmpty())
            QVERIFY2(run.err.contains(error.arg(k).trimmed()), qPrintable(run.err));
        QCOMPARE(m_mac->sandbox.logLines(), m_mac->testLoadCommands(k));
        const QList<LoadedKext> kexts = LoadedKextState(m_mac->sandbox.root()).read();
        QCOMPARE(LoadedKextState::find(kexts, identifier) != nullptr, error.isEmpty());
    }

    void unload_data() {
        QTest::addColumn<QString>("bundle");
        QTest::addColumn<QString>("error"); // empty: unloads
        QTest::newRow("unloads") << "/Extra/Extensions/ExampleAudioPatch.kext"
                                 << "";
        QTest::newRow("its plug-in keeps it") << "/System/Library/Extensions/SandboxACPIFamily.kext"
                                              << "Failed to unload com.sandboxmac.iokit.ACPIFamily "
                                                 "- (libkern/kext) kext is in use or "
                                                 "retained (cannot unload).";
    }

    void unload() {
        QFETCH(QString, bundle);
        QFETCH(QString, error);
        start();
        const QString kext = m_mac->sandbox.path(bundle);
        const Result run = kextkeeper({"unload", kext});
        QCOMPARE(run.status, error.isEmpty() ? 0 : 1);
        QVERIFY2(run.err.contains(error), qPrintable(run.err));
        QCOMPARE(m_mac->sandbox.logLines(), m_mac->unloadCommands(kext));
        const Result listed = kextkeeper({"loaded"});
        QCOMPARE(listed.out.contains(QLatin1String("org.example.driver.AudioPatch (1.2)")),
                 !bundle.contains(QLatin1String("AudioPatch")));
    }

    void unpackAndList() {
        start();
        const QString mkext = m_mac->r(QStringLiteral("Extra/Extensions.mkext"));
        const QString folder = m_mac->desktop() + QStringLiteral("/Mkext Contents");
        QDir().mkpath(folder);
        const Result unpack =
            kextkeeper({"mkext", "unpack", mkext, "--arch", "i386", "--to", folder});
        QVERIFY2(unpack.status == 0, qPrintable(unpack.err));
        QCOMPARE(QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot),
                 E2eSandbox::unpackedKexts());
        QVERIFY(QFileInfo::exists(folder +
                                  QStringLiteral("/ExampleEthernet.kext/Contents/Info.plist")));

        const Result loaded = kextkeeper({"loaded", "--filter", "EXAMPLE.driver"});
        QCOMPARE(loaded.status, 0);
        QVERIFY2(loaded.out.contains(QLatin1String("org.example.driver.Sensors (3.4.1)")),
                 qPrintable(loaded.out));
        QVERIFY(!loaded.out.contains(QLatin1String("com.sandboxmac")));
        // The built-in reader runs in-process: only the listing asked a tool.
        QCOMPARE(m_mac->sandbox.logLines(),
                 QStringList{m_mac->tool(QStringLiteral("/usr/sbin/kextstat"), {})});
    }

    void savedReport() {
        const QString root = E2eSandbox::reportRoot(QStringLiteral("cli"));
        start(root);
        const QString file = m_mac->desktop() + QStringLiteral("/Sandbox Mac.txt");
        const Result run = kextkeeper({"report", file});
        QVERIFY2(run.status == 0, qPrintable(run.err));
        QCOMPARE(run.out, QStringLiteral("Saved.\n"));
        QFile saved(file);
        QVERIFY(saved.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(saved.readAll()), E2eSandbox::expectedReport(root));
        QCOMPARE(m_mac->sortedLog(), m_mac->reportCommands());
    }
};

QTEST_GUILESS_MAIN(TestE2eCli)
#include "tst_e2ecli.moc"

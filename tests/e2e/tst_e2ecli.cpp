#include "CliRun.h"
#include "E2eSandbox.h"
#include "sandbox/LoadedKextState.h"

// The command-line verbs on a fresh sandbox with real processes all the way down: the
// command log must hold exactly the commands a Mac would have run, in order, the same
// ones the window runs for the same task (tst_e2ewindow).
class TestE2eCli : public QObject {
    Q_OBJECT

    std::unique_ptr<E2eSandbox> m_mac;

    void start(const QString &fixedRoot = {}) {
        m_mac = std::make_unique<E2eSandbox>();
        QVERIFY(m_mac->create(fixedRoot));
    }
    CliRun kextkeeper(const QStringList &args) const {
        return runKextKeeper(m_mac->sandbox.root(), m_mac->home(), args);
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
        const CliRun run =
            kextkeeper({"maintain", "--volume", "Macintosh HD", "--repair-extra",
                        "--rebuild-extra-mkext", "--repair-sle", "--rebuild-caches"});
        QCOMPARE(run.status, 0);
        QVERIFY(run.out.endsWith(QLatin1String("Selected tasks were finished.\n")));
        QCOMPARE(m_mac->sandbox.logLines(), m_mac->maintenanceCommands(prelink));
        QVERIFY(QFileInfo(m_mac->r("Extra/Extensions.mkext")).size() > 0);
    }

    void installTwoKextsWithBackup() {
        start();
        const QStringList bundles = m_mac->makeBundlesToInstall();
        const CliRun run = kextkeeper(
            QStringList{"install", "--volume", "Macintosh HD", "--to", "extra", "--backup"} +
            bundles);
        QVERIFY2(run.status == 0, qPrintable(run.err));
        QCOMPARE(m_mac->sandbox.logLines(), m_mac->installCommands(bundles));
        QVERIFY(m_mac->installedWithBackup());
    }

    void convertToKextStore() {
        start();
        const CliRun run =
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
        const CliRun run = kextkeeper({"load", k});
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
        const CliRun run = kextkeeper({"unload", kext});
        QCOMPARE(run.status, error.isEmpty() ? 0 : 1);
        QVERIFY2(run.err.contains(error), qPrintable(run.err));
        QCOMPARE(m_mac->sandbox.logLines(), QStringList{m_mac->tool("/sbin/kextunload", {kext})});
        const CliRun listed = kextkeeper({"loaded"});
        QCOMPARE(listed.out.contains(QLatin1String("org.example.driver.AudioPatch (1.2)")),
                 !bundle.contains(QLatin1String("AudioPatch")));
    }

    void savedReport() {
        const QString root = E2eSandbox::reportRoot("cli");
        start(root);
        const QString file = m_mac->desktop() + "/Sandbox Mac.txt";
        const CliRun run = kextkeeper({"report", file});
        QVERIFY2(run.status == 0, qPrintable(run.err));
        QCOMPARE(run.out, "Saved.\n");
        QFile saved(file);
        QVERIFY(saved.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(saved.readAll()), E2eSandbox::expectedReport(root));
        QCOMPARE(m_mac->sortedLog(), m_mac->reportCommands());
    }
};

QTEST_GUILESS_MAIN(TestE2eCli)
#include "tst_e2ecli.moc"

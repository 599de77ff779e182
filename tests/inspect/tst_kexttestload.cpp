#include "RecordingExecutor.h"
#include "inspect/KextTestLoad.h"
#include "plist/PlistFile.h"
#include "volumes/KextLocationIndex.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

class TestKextTestLoad : public QObject {
    Q_OBJECT
private slots:
    void init();
    void stopsEarly_data();
    void stopsEarly();
    void loaderTextIsTheOnlyFailure();

private:
    KextTestLoad::Result load(const QString &kext, std::optional<QString> answer);
    QStringList savedFolders() const;

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<SystemPaths> m_paths;
    std::unique_ptr<KextLocationIndex> m_index;
    RecordingExecutor m_executor;
    QList<QStringList> m_rootRuns;
};

void TestKextTestLoad::init() {
    m_dir = std::make_unique<QTemporaryDir>();
    QDir().mkpath(m_dir->filePath("contents"));
    m_paths = std::make_unique<SystemPaths>(m_dir->filePath("root"), m_dir->filePath("home"),
                                            m_dir->filePath("contents"));
    m_index = std::make_unique<KextLocationIndex>(m_dir->filePath("contents/CustomKextDirs.plist"));
    m_executor = RecordingExecutor();
    m_rootRuns.clear();
}

KextTestLoad::Result TestKextTestLoad::load(const QString &kext, std::optional<QString> answer) {
    const KextTestLoad testLoad(*m_paths, m_executor, *m_index,
                                [this, answer](const QString &command, const QString &argument) {
                                    m_rootRuns << QStringList{command, argument};
                                    return answer;
                                });
    return testLoad.run(kext);
}

QStringList TestKextTestLoad::savedFolders() const {
    const auto saved = PlistFile::readDictionary(m_index->settingsFile());
    return saved ? PlistFile::stringArray(*saved, "Custom Kext Directories").value_or(QStringList())
                 : QStringList();
}

void TestKextTestLoad::stopsEarly_data() {
    QTest::addColumn<bool>("chosen");
    QTest::addColumn<bool>("grant");
    QTest::addColumn<bool>("present");
    QTest::addColumn<int>("outcome");
    QTest::addColumn<QString>("message");
    QTest::addColumn<int>("authorizeCalls");
    QTest::newRow("nothing chosen") << false << true << true << int(KextTestLoad::Outcome::NoKext)
                                    << "You haven't selected any kext." << 0;
    QTest::newRow("authorization refused")
        << true << false << true << int(KextTestLoad::Outcome::Stopped) << QString() << 1;
    QTest::newRow("kext gone") << true << true << false << int(KextTestLoad::Outcome::Stopped)
                               << QString() << 1;
}

void TestKextTestLoad::stopsEarly() {
    QFETCH(bool, chosen);
    QFETCH(bool, grant);
    QFETCH(bool, present);
    QFETCH(int, outcome);
    QFETCH(QString, message);
    QFETCH(int, authorizeCalls);
    const QString kext = m_dir->filePath("Desktop/A.kext");
    if (present)
        QDir().mkpath(kext);
    m_executor.grant = grant;
    const KextTestLoad::Result result = load(chosen ? kext : QString(), QStringLiteral("x"));
    QCOMPARE(int(result.outcome), outcome);
    QCOMPARE(result.message, message);
    QCOMPARE(m_executor.authorizeCalls, authorizeCalls);
    QVERIFY(m_executor.commands.isEmpty());
    QVERIFY(m_rootRuns.isEmpty());
    QVERIFY(!QFileInfo::exists(m_index->settingsFile()));
}

// The loader's text is the failure; no text, or none readable, is a load.
void TestKextTestLoad::loaderTextIsTheOnlyFailure() {
    // A folder saved by an earlier run must survive the new one being added.
    QFile settings(m_index->settingsFile());
    QVERIFY(settings.open(QIODevice::WriteOnly));
    settings.write("<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>Custom Kext "
                   "Directories</key><array><string>/earlier</string></array></dict></plist>");
    settings.close();

    const QString kext = m_dir->filePath("My Desk's/Bad Kext.kext");
    QDir().mkpath(kext);
    const QString loader =
        kext + QStringLiteral(" failed to load - (libkern/kext) not loadable (reason "
                              "unspecified); check the system/kernel logs for errors or try "
                              "kextutil(8).\n");
    const KextTestLoad::Result result = load(kext, loader);
    QCOMPARE(int(result.outcome), int(KextTestLoad::Outcome::Failed));
    QCOMPARE(result.message, loader);
    const Command chown{m_dir->filePath("root/usr/sbin/chown"), {"-R", "0:0", kext}};
    QCOMPARE(m_executor.commands, QList<Command>{chown});
    QCOMPARE(m_rootRuns, (QList<QStringList>{{"kextload", kext}}));
    QStringList folders = savedFolders();
    folders.sort();
    QCOMPARE(folders, (QStringList{"/earlier", m_dir->filePath("My Desk's")}));

    for (const std::optional<QString> &answer :
         {std::optional<QString>(QString()), std::optional<QString>()}) {
        const KextTestLoad::Result loaded = load(kext, answer);
        QCOMPARE(int(loaded.outcome), int(KextTestLoad::Outcome::Loaded));
        QCOMPARE(loaded.message, QString());
    }
    QCOMPARE(m_executor.commands.size(), 3);
}

QTEST_GUILESS_MAIN(TestKextTestLoad)
#include "tst_kexttestload.moc"

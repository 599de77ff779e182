#include "CliRun.h"
#include "RecordingExecutor.h"
#include "inspect/KextTestLoad.h"
#include "volumes/KextLocationIndex.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

class TestKextTestLoad : public QObject {
    Q_OBJECT
private slots:
    void init() {
        m_dir = std::make_unique<QTemporaryDir>();
        QDir().mkpath(m_dir->filePath("contents"));
        m_paths = std::make_unique<SystemPaths>(m_dir->filePath("root"), m_dir->filePath("home"),
                                                m_dir->filePath("contents"));
        m_index =
            std::make_unique<KextLocationIndex>(m_dir->filePath("contents/CustomKextDirs.plist"));
        m_executor = RecordingExecutor();
        m_rootRuns.clear();
    }

    // A kext gone while the password was asked for stops before any command; a refused
    // authorization is the check page's test.
    void kextGoneStopsEarly() {
        const KextTestLoad::Result result =
            load(m_dir->filePath("Desktop/A.kext"), QStringLiteral("x"));
        QCOMPARE(int(result.outcome), int(KextTestLoad::Outcome::Stopped));
        QCOMPARE(result.message, QString());
        QCOMPARE(m_executor.authorizeCalls, 1);
        QVERIFY(m_executor.commands.isEmpty());
        QVERIFY(m_rootRuns.isEmpty());
        QVERIFY(!QFileInfo::exists(m_index->settingsFile()));
    }

    // The loader's text is the failure; no text, or none readable, is a load.
    void loaderTextIsTheOnlyFailure() {
        // A folder saved by an earlier run must survive the new one being added.
        QVERIFY(writePlist(m_index->settingsFile(), "<key>Custom Kext Directories</key><array>"
                                                    "<string>/earlier</string></array>"));

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
        KextLocationIndex saved(m_index->settingsFile());
        QCOMPARE(saved.CountPathes(), 2u);
        QCOMPARE(saved.kextDirs(), (QStringList{"/earlier", m_dir->filePath("My Desk's")}));

        for (const std::optional<QString> &answer :
             {std::optional<QString>(QString()), std::optional<QString>()}) {
            const KextTestLoad::Result loaded = load(kext, answer);
            QCOMPARE(int(loaded.outcome), int(KextTestLoad::Outcome::Loaded));
            QCOMPARE(loaded.message, QString());
        }
        QCOMPARE(m_executor.commands.size(), 3);
    }

private:
    KextTestLoad::Result load(const QString &kext, std::optional<QString> answer) {
        const KextTestLoad testLoad(
            *m_paths, m_executor, *m_index,
            [this, answer](const QString &command, const QString &argument) {
                m_rootRuns << QStringList{command, argument};
                return answer;
            });
        return testLoad.run(kext);
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<SystemPaths> m_paths;
    std::unique_ptr<KextLocationIndex> m_index;
    RecordingExecutor m_executor;
    QList<QStringList> m_rootRuns;
};

QTEST_GUILESS_MAIN(TestKextTestLoad)
#include "tst_kexttestload.moc"

#include "loaded/KextUnloader.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

// Unload and reload over a stand-in root run that answers each tool with a given error text
// (none: the authorization was refused). The real root script runs them on the loaded
// kexts page and end to end.
class TestKextUnloader : public QObject {
    Q_OBJECT
private slots:
    void steps_data() {
        QTest::addColumn<bool>("reload");
        QTest::addColumn<QString>("kext"); // below the test folder
        QTest::addColumn<std::optional<QString>>("unloadAnswer");
        QTest::addColumn<std::optional<QString>>("loadAnswer");
        QTest::addColumn<int>("outcome");
        QTest::addColumn<QString>("error");
        QTest::addColumn<QStringList>("calls");

        using A = std::optional<QString>;
        const int skipped = int(KextUnloader::Outcome::Skipped);
        const int done = int(KextUnloader::Outcome::Done);
        const int failed = int(KextUnloader::Outcome::Failed);
        const QString busy = QStringLiteral("Failed to unload com.example.Busy - (libkern/kext) "
                                            "kext is in use or retained (cannot unload).\n");
        const QString unloadCall = QStringLiteral("kextunload [@/Jörg's Kext.kext]");
        const QString loadCall = QStringLiteral("kextload [@/Jörg's Kext.kext]");
        const QString kext = QStringLiteral("Jörg's Kext.kext");
        QTest::newRow("unload, nothing there")
            << false << "Gone.kext" << A("") << A("") << skipped << "" << QStringList();
        QTest::newRow("unload fails")
            << false << kext << A(busy) << A("") << failed << busy << QStringList{unloadCall};
        QTest::newRow("unload refused counts as done")
            << false << kext << A() << A("") << done << "" << QStringList{unloadCall};
        QTest::newRow("reload") << true << kext << A("") << A("") << done << ""
                                << QStringList{unloadCall, loadCall};
        QTest::newRow("reload, unload fails: no load")
            << true << kext << A(busy) << A("") << failed << busy << QStringList{unloadCall};
        QTest::newRow("reload, refused unload still loads")
            << true << kext << A() << A("") << done << "" << QStringList{unloadCall, loadCall};
        QTest::newRow("reload, load fails")
            << true << kext << A("") << A("not loadable\n") << failed << "not loadable\n"
            << QStringList{unloadCall, loadCall};
    }

    void steps() {
        QFETCH(bool, reload);
        QFETCH(QString, kext);
        QFETCH(std::optional<QString>, unloadAnswer);
        QFETCH(std::optional<QString>, loadAnswer);
        QFETCH(int, outcome);
        QFETCH(QString, error);
        QFETCH(QStringList, calls);

        QTemporaryDir dir;
        QVERIFY(QDir().mkpath(dir.filePath(QStringLiteral("Jörg's Kext.kext"))));
        QStringList recorded;
        const KextUnloader unloader([&](const QString &command, const QString &argument) {
            recorded << command + " [" + argument + ']';
            return command == QLatin1String("kextunload") ? unloadAnswer : loadAnswer;
        });
        const QString path = dir.filePath(kext);
        const KextUnloader::Result result = reload ? unloader.reload(path) : unloader.unload(path);
        QCOMPARE(int(result.outcome), outcome);
        QCOMPARE(result.error, error);
        QCOMPARE(recorded, calls.replaceInStrings(QStringLiteral("@"), dir.path()));
    }
};

QTEST_GUILESS_MAIN(TestKextUnloader)
#include "tst_kextunloader.moc"

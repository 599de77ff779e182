#include "TestScripts.h"
#include "exec/AdminAuthentication.h"
#include "exec/RootScript.h"
#include "loaded/KextUnloader.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {
// Both tools note "name [argument]" and fail, in the kernel's words, for a kext whose
// path names them in capitals.
QByteArray standIn(const QByteArray &name, const QByteArray &failMark, const QByteArray &error) {
    return "printf '%s [%s]\\n' " + name +
           " \"$1\" >> \"$KK_CALLS\"\n"
           "case \"$1\" in *" +
           failMark + "*) printf '%s\\n' \"" + error + "\" >&2 ;; esac\n";
}
} // namespace

// Unload and reload through the real root script, with stand-in kextunload and kextload
// found by bare name on the root shell's search path.
class TestKextUnloader : public QObject {
    Q_OBJECT
private slots:
    void init() {
        m_dir = std::make_unique<QTemporaryDir>();
        m_bin = m_dir->filePath(QStringLiteral("bin"));
        m_calls = m_dir->filePath(QStringLiteral("calls"));
        QDir().mkpath(m_bin);
        QDir().mkpath(m_dir->filePath(QStringLiteral("home")));
        writeScript(QDir(m_bin), QStringLiteral("kextunload"),
                    standIn("kextunload", "UNLOADFAILS",
                            "Failed to unload com.example.Busy - (libkern/kext) kext is in use or "
                            "retained (cannot unload)."));
        writeScript(QDir(m_bin), QStringLiteral("kextload"),
                    standIn("kextload", "LOADFAILS",
                            "$1 failed to load - (libkern/kext) not loadable (reason unspecified); "
                            "check the system/kernel logs for errors or try kextutil(8)."));
        for (const char *kext :
             {"Fine.kext", "UNLOADFAILS.kext", "LOADFAILS.kext", "Jörg's Kext.kext"})
            QDir().mkpath(m_dir->filePath(QString::fromUtf8(kext)));
    }

    void steps_data() {
        QTest::addColumn<bool>("reload");
        QTest::addColumn<QString>("kext"); // below the test folder
        QTest::addColumn<int>("outcome");
        QTest::addColumn<QString>("error");
        QTest::addColumn<QStringList>("calls");

        const int skipped = int(KextUnloader::Outcome::Skipped);
        const int done = int(KextUnloader::Outcome::Done);
        const int failed = int(KextUnloader::Outcome::Failed);
        QTest::newRow("unload, nothing there")
            << false << "Gone.kext" << skipped << "" << QStringList();
        QTest::newRow("unload, apostrophe and non-ASCII")
            << false << QStringLiteral("Jörg's Kext.kext") << done << ""
            << QStringList{QStringLiteral("kextunload [@/Jörg's Kext.kext]")};
        QTest::newRow("reload") << true << "Fine.kext" << done << ""
                                << QStringList{"kextunload [@/Fine.kext]",
                                               "kextload [@/Fine.kext]"};
        QTest::newRow("reload, unload fails: no load")
            << true << "UNLOADFAILS.kext" << failed
            << "Failed to unload com.example.Busy - (libkern/kext) kext is in use or retained "
               "(cannot unload).\n"
            << QStringList{"kextunload [@/UNLOADFAILS.kext]"};
        QTest::newRow("reload, load fails")
            << true << "LOADFAILS.kext" << failed
            << "@/LOADFAILS.kext failed to load - (libkern/kext) not loadable (reason "
               "unspecified); "
               "check the system/kernel logs for errors or try kextutil(8).\n"
            << QStringList{"kextunload [@/LOADFAILS.kext]", "kextload [@/LOADFAILS.kext]"};
    }

    void steps() {
        QFETCH(bool, reload);
        QFETCH(QString, kext);
        QFETCH(int, outcome);
        QFETCH(QString, error);
        QFETCH(QStringList, calls);

        AdminAuthentication::Config config;
        config.direct = true;
        config.environment = {QStringLiteral("PATH=") + m_bin + QStringLiteral(":/usr/bin:/bin"),
                              QStringLiteral("KK_CALLS=") + m_calls};
        AdminAuthentication session(config, nullptr, nullptr);
        RootScript script(session, m_dir->filePath(QStringLiteral("home")));
        const KextUnloader unloader([&script](const QString &command, const QString &argument) {
            return script.run(command, argument);
        });

        const QString path = m_dir->filePath(kext);
        const KextUnloader::Result result = reload ? unloader.reload(path) : unloader.unload(path);
        QCOMPARE(int(result.outcome), outcome);
        QCOMPARE(result.error, QString(error).replace(QLatin1Char('@'), m_dir->path()));

        QFile file(m_calls);
        QStringList recorded;
        if (file.open(QIODevice::ReadOnly))
            recorded =
                QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QCOMPARE(recorded, calls.replaceInStrings(QStringLiteral("@"), m_dir->path()));
    }

    void refusedAuthorizationCountsAsSuccess() {
        QStringList commands;
        const KextUnloader unloader([&commands](const QString &command, const QString &) {
            commands << command;
            return std::optional<QString>();
        });
        const QString path = m_dir->filePath(QStringLiteral("Fine.kext"));
        QCOMPARE(int(unloader.unload(path).outcome), int(KextUnloader::Outcome::Done));
        QCOMPARE(int(unloader.reload(path).outcome), int(KextUnloader::Outcome::Done));
        QCOMPARE(commands, (QStringList{"kextunload", "kextunload", "kextload"}));
    }

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_bin;
    QString m_calls;
};

QTEST_GUILESS_MAIN(TestKextUnloader)
#include "tst_kextunloader.moc"

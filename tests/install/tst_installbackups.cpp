#include "RecordingInstallView.h"
#include "exec/Executor.h"
#include "install/InstallPlan.h"
#include "install/KextBackup.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

// Backups made before a bundle is replaced, with the removal and the copy really done,
// so a backup taken too late (or not at all) shows up as lost content.
class TestInstallBackups : public QObject {
    Q_OBJECT
private slots:
    void init();
    void folderName_data();
    void folderName();
    void backupBeforeReplacing_data();
    void backupBeforeReplacing();
    void copyTreeKeepsLinksAndRefusesExistingTarget();

private:
    QString makeBundle(const QString &folder, const QString &name, const QByteArray &content);
    static QByteArray content(const QString &bundle);
    InstallOptions options(const QStringList &bundles, bool backup) const;

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<SystemPaths> m_paths;
    QString m_extensions;
};

namespace {
const QString volume = QStringLiteral("HD");
const QDateTime fixedTime(QDate(2011, 3, 5), QTime(14, 7, 9));

// Does what rm -Rf and cp -R would do as root, and records the command lines.
class FileExecutor final : public Executor {
public:
    QStringList lines;
    bool authorize() override { return true; }
    void run(const Command &command) override {
        lines << command.toShellLine();
        const QString tool = QFileInfo(command.tool).fileName();
        if (tool == QLatin1String("rm"))
            QDir(command.args.last()).removeRecursively();
        if (tool == QLatin1String("cp")) {
            const QString from = command.args.at(1);
            KextBackup::copyTree(from, command.args.at(2) + '/' + QFileInfo(from).fileName());
        }
    }
};
} // namespace

void TestInstallBackups::init() {
    m_dir = std::make_unique<QTemporaryDir>();
    m_paths = std::make_unique<SystemPaths>(m_dir->path() + QStringLiteral("/root"),
                                            m_dir->path() + QStringLiteral("/home"),
                                            m_dir->path() + QStringLiteral("/contents"));
    m_extensions = m_paths->volumeRoot(volume) + QStringLiteral("/Extra/Extensions");
    QDir().mkpath(m_extensions);
}

QString TestInstallBackups::makeBundle(const QString &folder, const QString &name,
                                       const QByteArray &text) {
    const QString bundle = folder + '/' + name;
    QDir().mkpath(bundle + QStringLiteral("/Contents"));
    QFile file(bundle + QStringLiteral("/Contents/Info.plist"));
    if (file.open(QIODevice::WriteOnly))
        file.write(text);
    return bundle;
}

QByteArray TestInstallBackups::content(const QString &bundle) {
    QFile file(bundle + QStringLiteral("/Contents/Info.plist"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

InstallOptions TestInstallBackups::options(const QStringList &bundles, bool backup) const {
    InstallOptions o;
    o.bundles = bundles;
    o.volume = volume;
    o.toExtra = true;
    o.backup = backup;
    return o;
}

void TestInstallBackups::folderName_data() {
    QTest::addColumn<QDateTime>("when");
    QTest::addColumn<QString>("name");
    QTest::newRow("padded day, month and time") << fixedTime << "05-03 14_07_09";
    QTest::newRow("24-hour clock, no year")
        << QDateTime(QDate(1999, 12, 31), QTime(23, 59, 58)) << "31-12 23_59_58";
}

void TestInstallBackups::folderName() {
    QFETCH(QDateTime, when);
    QFETCH(QString, name);
    QCOMPARE(KextBackup::folderName(when), name);
}

void TestInstallBackups::backupBeforeReplacing_data() {
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("installed"); // an older copy is in Extra/Extensions
    QTest::addColumn<int>("times");      // the same bundle listed this often
    QTest::newRow("blanks, apostrophe, non-ASCII") << "Drïver's Nämé.kext" << true << 1;
    QTest::newRow("new bundle: no backup folder") << "A.kext" << false << 1;
    // The second backup finds the first in place and is given up; the bundle is still
    // replaced both times.
    QTest::newRow("same bundle twice keeps the first backup") << "A.kext" << true << 2;
}

void TestInstallBackups::backupBeforeReplacing() {
    QFETCH(QString, name);
    QFETCH(bool, installed);
    QFETCH(int, times);
    makeBundle(m_extensions, QStringLiteral("Other.kext"), "other");
    if (installed)
        makeBundle(m_extensions, name, "old");
    const QString source = makeBundle(m_dir->path() + QStringLiteral("/new"), name, "new");
    FileExecutor executor;
    RecordingInstallView view;
    InstallPlan plan(options(QStringList(times, source), true), *m_paths, executor, view);
    plan.setClock([] { return fixedTime; });
    plan.run();

    const QString backups = m_paths->desktop() + QStringLiteral("/Kext Backups");
    QCOMPARE(content(m_extensions + '/' + name), QByteArray("new"));
    QCOMPARE(QFileInfo::exists(backups), installed);
    if (installed) {
        QCOMPARE(content(backups + QStringLiteral("/05-03 14_07_09/") + name), QByteArray("old"));
        QVERIFY(view.events.contains(
            QStringLiteral("state %1/|05-03 14_07_09").arg(m_paths->volumeRoot(volume))));
    }
    QCOMPARE(executor.lines.filter(QStringLiteral("/bin/rm -Rf")).size(), installed ? times : 0);
    QCOMPARE(executor.lines.filter(QStringLiteral("/bin/cp -R")).size(), times);
}

void TestInstallBackups::copyTreeKeepsLinksAndRefusesExistingTarget() {
    const QString bundle = makeBundle(m_dir->path(), QStringLiteral("L.kext"), "linked");
    QVERIFY(QFile::link(QStringLiteral("Contents/Info.plist"), bundle + QStringLiteral("/Link")));
    const QString copy = m_dir->path() + QStringLiteral("/copy/L.kext");
    QDir().mkpath(m_dir->path() + QStringLiteral("/copy"));
    QVERIFY(KextBackup::copyTree(bundle, copy));
    QCOMPARE(content(copy), QByteArray("linked"));
    QVERIFY(QFileInfo(copy + QStringLiteral("/Link")).isSymLink());
    QCOMPARE(QFile::symLinkTarget(copy + QStringLiteral("/Link")),
             copy + QStringLiteral("/Contents/Info.plist"));
    QVERIFY(!KextBackup::copyTree(bundle, copy));
    QVERIFY(!KextBackup::copyTree(m_dir->path() + QStringLiteral("/missing.kext"),
                                  m_dir->path() + QStringLiteral("/copy/M.kext")));
}

QTEST_GUILESS_MAIN(TestInstallBackups)
#include "tst_installbackups.moc"

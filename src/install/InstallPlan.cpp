#include "install/InstallPlan.h"

#include "exec/Executor.h"
#include "exec/IconAlert.h"
#include "exec/Tr.h"
#include "install/InstallList.h"
#include "install/InstallView.h"
#include "install/KextBackup.h"
#include "maintenance/LionCache.h"
#include "maintenance/MkextRebuild.h"
#include "plist/PlistFile.h"

#include <QDir>
#include <QFileInfo>

namespace {
const QString sleRelative = QStringLiteral("System/Library/Extensions");

bool exists(const QString &path) {
    return QFileInfo::exists(path);
}

bool isSameFile(const QString &a, const QString &b) {
    const QString canonical = QFileInfo(a).canonicalFilePath();
    return !canonical.isEmpty() && canonical == QFileInfo(b).canonicalFilePath();
}
} // namespace

InstallPlan::InstallPlan(InstallOptions options, const SystemPaths &paths, Executor &executor,
                         InstallView &view)
    : m_options(std::move(options)), m_paths(paths), m_executor(executor), m_view(view),
      m_isRoot([](const QString &path) { return IconAlert::defaultinst().isRoot(path); }),
      m_clock([] { return QDateTime::currentDateTime(); }) {}

QString InstallPlan::rootPath() const {
    return m_paths.volumeRoot(m_options.volume) + QLatin1Char('/');
}

QString InstallPlan::extraBase() const {
    if (m_options.extraVersion.isEmpty())
        return rootPath() + QStringLiteral("Extra");
    return rootPath() + QStringLiteral("Extra/") + m_options.extraVersion;
}

bool InstallPlan::prepare() {
    if (m_options.bundles.isEmpty()) {
        m_view.showError(kkTr("No selected kexts to install."));
        return false;
    }
    if (!m_executor.authorize())
        return false;
    m_view.progressPrepared(int(m_options.bundles.size()) - 1);
    return true;
}

void InstallPlan::run() {
    m_view.setControlsEnabled(false);
    m_view.setWorking(true);
    if (m_options.backup)
        m_datedir = KextBackup::folderName(m_clock());
    m_view.taskState(rootPath(), m_datedir);

    if (m_options.toExtra) {
        const bool extensions = exists(extraBase() + QStringLiteral("/Extensions"));
        const bool kextStore = exists(extraBase() + QStringLiteral("/KextStore"));
        if (extensions && kextStore) {
            stopEarly(kkTr("Both Extra/Extensions and Extra/KextStore found."), true);
            return;
        }
        if (!extensions && !kextStore) {
            stopEarly(kkTr("No Extra/Extensions or Extra/KextStore found."), true);
            return;
        }
        installExtra();
    }
    if (m_options.toSle && !installSle())
        return;
    if (m_options.toDesktop)
        installDesktop();
    finish();
}

void InstallPlan::installExtra() {
    const QString mkext = extraBase() + QStringLiteral("/Extensions.mkext");
    const QString extensions = extraBase() + QStringLiteral("/Extensions");
    if (exists(extensions)) {
        installBundles(extensions, Branch::Extensions);
        run(m_paths.system(QStringLiteral("/usr/sbin/chown")),
            {QStringLiteral("-R"), QStringLiteral("0:0"), extensions});
        run(m_paths.system(QStringLiteral("/bin/chmod")),
            {QStringLiteral("-R"), QStringLiteral("755"), extensions});
        // Loose kexts are packed only when the volume already boots from an mkext; the
        // touch makes the system's own caches notice the change too.
        if (exists(mkext)) {
            run(m_paths.system(QStringLiteral("/usr/bin/touch")), {extensions});
            m_executor.run(mkextRebuildCommand(m_paths, mkext, extensions));
        }
    }
    const QString kextStore = extraBase() + QStringLiteral("/KextStore");
    if (exists(kextStore)) {
        installBundles(kextStore, Branch::KextStore);
        run(m_paths.system(QStringLiteral("/usr/sbin/chown")),
            {QStringLiteral("-R"), QStringLiteral("0:0"), kextStore});
        run(m_paths.system(QStringLiteral("/bin/chmod")),
            {QStringLiteral("-R"), QStringLiteral("755"), kextStore});
        // KextStore kexts are only ever loaded from the mkext: it is always rebuilt.
        m_executor.run(mkextRebuildCommand(m_paths, mkext, kextStore));
    }
}

bool InstallPlan::installSle() {
    const QString sle = rootPath() + sleRelative;
    if (!exists(sle)) {
        // The option boxes are left as they are here, unlike the Extra errors.
        stopEarly(kkTr("No System/Library/Extensions on selected disk."), false);
        return false;
    }
    installBundles(sle, Branch::Sle);
    run(m_paths.system(QStringLiteral("/usr/bin/touch")), {sle});
    if (lionCacheWanted())
        m_executor.run(mkextRebuildCommand(m_paths, LionCache::startupMkext(rootPath()), sle));
    // The system-wide caches belong to the running system and take no volume.
    const bool startedSystem = m_isRoot(rootPath());
    if (startedSystem && m_options.prelinkKernel) {
        const QString kextcache = m_paths.system(QStringLiteral("/usr/sbin/kextcache"));
        run(kextcache, {QStringLiteral("-system-caches")});
        run(kextcache, {QStringLiteral("-system-prelinked-kernel")});
    }
    return true;
}

void InstallPlan::installDesktop() {
    const QString staging = m_paths.desktop() + QStringLiteral("/.mkext_pack");
    if (m_touchUserFiles && !exists(staging))
        QDir().mkpath(staging);
    const int count = int(m_options.bundles.size());
    for (int i = 0; i < count; ++i) {
        m_view.bundleStarted(i, count, m_options.bundles.at(i));
        run(m_paths.system(QStringLiteral("/bin/cp")),
            {QStringLiteral("-R"), m_options.bundles.at(i), staging});
    }
    m_view.setIndeterminate(true);
    run(m_paths.system(QStringLiteral("/usr/sbin/chown")),
        {QStringLiteral("-R"), QStringLiteral("0:0"), staging});
    run(m_paths.system(QStringLiteral("/bin/chmod")),
        {QStringLiteral("-R"), QStringLiteral("755"), staging});
    m_executor.run(mkextRebuildCommand(
        m_paths, m_paths.desktop() + QStringLiteral("/Extensions.mkext"), staging));
    // Without -f: the staging folder is ours and must be there.
    run(m_paths.system(QStringLiteral("/bin/rm")), {QStringLiteral("-R"), staging});
}

void InstallPlan::installBundles(const QString &folder, Branch branch) {
    const int count = int(m_options.bundles.size());
    for (int i = 0; i < count; ++i) {
        m_view.bundleStarted(i, count, m_options.bundles.at(i));
        installBundle(m_options.bundles.at(i), folder, branch);
    }
    m_view.setIndeterminate(true);
}

void InstallPlan::installBundle(const QString &bundle, const QString &folder, Branch branch) {
    const QString name = InstallList::bundleName(bundle);
    const QString installed = folder + QLatin1Char('/') + name;
    if (m_options.backup && m_touchUserFiles && exists(installed))
        KextBackup(m_paths.desktop(), m_datedir).save(installed, name);
    // A bundle picked from its own destination is already in place: removing it first
    // would leave nothing to copy.
    if (!isSameFile(bundle, installed)) {
        // Asked again: the old bundle goes only after its backup was attempted.
        if (exists(installed))
            run(m_paths.system(QStringLiteral("/bin/rm")), {QStringLiteral("-Rf"), installed});
        run(m_paths.system(QStringLiteral("/bin/cp")), {QStringLiteral("-R"), bundle, folder});
    }
    if (branch == Branch::Sle) {
        // The system's folder keeps its own modes; only the new bundle is set.
        run(m_paths.system(QStringLiteral("/usr/sbin/chown")),
            {QStringLiteral("-R"), QStringLiteral("0:0"), installed});
        run(m_paths.system(QStringLiteral("/bin/chmod")),
            {QStringLiteral("-R"), QStringLiteral("755"), installed});
    }
}

bool InstallPlan::lionCacheWanted() const {
    const auto settings = PlistFile::readDictionary(m_paths.infoPlist());
    if (!settings || !PlistFile::boolean(*settings, "Manually recreate Lion cache").value_or(false))
        return false;
    return LionCache::volumeIsLion(rootPath());
}

void InstallPlan::stopEarly(const QString &message, bool reevaluate) {
    m_view.setControlsEnabled(true);
    m_view.setWorking(false);
    if (reevaluate)
        m_view.reevaluateVolume();
    m_view.showError(message);
}

void InstallPlan::finish() {
    m_view.setIndeterminate(false);
    m_view.setControlsEnabled(true);
    m_view.reevaluateVolume();
    m_view.setWorking(false);
    m_view.showInfo(kkTr("Selected tasks were finished."));
    m_view.progressReset();
}

void InstallPlan::run(const QString &tool, const QStringList &args) {
    m_executor.run(Command{tool, args, true});
}

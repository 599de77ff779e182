#include "mkext/KextCollector.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cstdlib>
#include <plist/plist.h>

namespace {

// Plug-ins of plug-ins exist; deeper nesting only happens through link loops.
constexpr int MaxPlugInDepth = 4;
constexpr qint64 MaxInfoPlistSize = qint64(16) << 20;

std::shared_ptr<void> readInfo(const QString &bundle) {
    for (const QString &candidate : {bundle + QStringLiteral("/Contents/Info.plist"),
                                     bundle + QStringLiteral("/Info.plist")}) {
        QFile file(candidate);
        if (!file.open(QIODevice::ReadOnly))
            continue;
        // Read by the file's own size: asking for the cap would allocate it every time.
        if (file.size() > MaxInfoPlistSize)
            return nullptr;
        const QByteArray bytes = file.readAll();
        plist_t root = nullptr;
        plist_from_memory(bytes.constData(), uint32_t(bytes.size()), &root);
        if (root && plist_get_node_type(root) == PLIST_DICT)
            return std::shared_ptr<void>(root, plist_free);
        plist_free(root);
        return nullptr;
    }
    return nullptr;
}

std::optional<QString> executableName(plist_t info) {
    plist_t node = plist_dict_get_item(info, "CFBundleExecutable");
    if (!node || plist_get_node_type(node) != PLIST_STRING)
        return std::nullopt;
    char *value = nullptr;
    plist_get_string_val(node, &value);
    const QString name = QString::fromUtf8(value);
    free(value);
    return name;
}

class Collector {
public:
    Collector(KextCollector::Result &result, qsizetype maxExecutableSize)
        : m_result(result), m_maxExecutableSize(maxExecutableSize) {}

    void addFolder(const QString &folder, int depth) {
        const QStringList names = QDir(folder).entryList({QStringLiteral("*.kext")},
                                                         QDir::Dirs | QDir::Hidden, QDir::Name);
        for (const QString &name : names)
            addKext(folder + QLatin1Char('/') + name, depth);
    }

    void addKext(const QString &path, int depth) {
        const QString bundle = QDir::cleanPath(QFileInfo(path).absoluteFilePath());
        KextSource kext;
        kext.bundlePath = bundle;
        kext.info = readInfo(bundle);
        if (!kext.info) {
            omit(bundle, QStringLiteral("has no readable Info.plist"));
        } else if (loadExecutable(kext)) {
            m_result.kexts.append(kext);
        }
        if (depth < MaxPlugInDepth)
            addFolder(bundle + QStringLiteral("/Contents/PlugIns"), depth + 1);
    }

private:
    bool loadExecutable(KextSource &kext) {
        const std::optional<QString> name = executableName(kext.info.get());
        if (!name)
            return true;
        if (name->isEmpty() || name->contains(QLatin1Char('/'))) {
            omit(kext.bundlePath, QStringLiteral("names an invalid executable"));
            return false;
        }
        QFile file(kext.bundlePath + QStringLiteral("/Contents/MacOS/") + *name);
        if (!file.exists())
            file.setFileName(kext.bundlePath + QLatin1Char('/') + *name);
        if (!file.open(QIODevice::ReadOnly)) {
            omit(kext.bundlePath, QStringLiteral("lacks its executable"));
            return false;
        }
        if (file.size() > m_maxExecutableSize) {
            omit(kext.bundlePath, QStringLiteral("has an executable too large for an mkext"));
            return false;
        }
        kext.executablePath = file.fileName();
        kext.hasExecutable = true;
        return true;
    }

    void omit(const QString &bundle, const QString &why) {
        m_result.warnings << QStringLiteral("%1 %2; omitting from mkext.").arg(bundle, why);
    }

    KextCollector::Result &m_result;
    qsizetype m_maxExecutableSize;
};

} // namespace

std::optional<QByteArray> KextSource::loadExecutable() const {
    if (!executable.isNull())
        return executable;
    QFile file(executablePath);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return std::nullopt;
    return bytes;
}

KextCollector::Result KextCollector::collect(const QString &path, qsizetype maxExecutableSize) {
    Result result;
    const QFileInfo info(path);
    if (!info.isDir() || !info.isReadable()) {
        result.error = QStringLiteral("Can't read kext folder %1.").arg(path);
        return result;
    }
    Collector collector(result, maxExecutableSize);
    if (path.endsWith(QLatin1String(".kext")))
        collector.addKext(path, 0);
    else
        collector.addFolder(path, 0);
    return result;
}

#include "mkext/KextCollector.h"

#include "plist/PlistFile.h"
#include "plist/RegularFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cstdlib>
#include <plist/plist.h>

namespace {

// Plug-ins of plug-ins exist; deeper nesting only happens through link loops.
constexpr int MaxPlugInDepth = 4;

struct Info {
    std::shared_ptr<void> tree;
    QString refusal; // why a file that is there was not read
};

Info readInfo(const QString &bundle) {
    for (const QString &candidate : {bundle + QStringLiteral("/Contents/Info.plist"),
                                     bundle + QStringLiteral("/Info.plist")}) {
        if (!QFileInfo::exists(candidate))
            continue;
        PlistFile::Tree read = PlistFile::readDictionaryTree(candidate);
        if (!read.tree)
            return {nullptr, read.refusal};
        return {std::shared_ptr<void>(read.tree.release(), plist_free), QString()};
    }
    return {};
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
        const Info info = readInfo(bundle);
        kext.info = info.tree;
        if (!info.refusal.isEmpty()) {
            omit(bundle, QStringLiteral("has an Info.plist that ") + info.refusal);
        } else if (!kext.info) {
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
        QString path = kext.bundlePath + QStringLiteral("/Contents/MacOS/") + *name;
        if (!QFileInfo::exists(path))
            path = kext.bundlePath + QLatin1Char('/') + *name;
        if (!QFileInfo::exists(path)) {
            omit(kext.bundlePath, QStringLiteral("lacks its executable"));
            return false;
        }
        const QString refusal = RegularFile::refusal(path, m_maxExecutableSize);
        if (!refusal.isEmpty()) {
            omit(kext.bundlePath, refusal.startsWith(QLatin1String("is larger"))
                                      ? QStringLiteral("has an executable too large for an mkext")
                                      : QStringLiteral("has an executable that ") + refusal);
            return false;
        }
        kext.executablePath = path;
        kext.maxExecutableSize = m_maxExecutableSize;
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
    // Looked at again: the file may have been swapped for a pipe since it was collected.
    return RegularFile::read(executablePath, maxExecutableSize).bytes;
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

#pragma once

#include <QByteArray>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QList>
#include <QPair>
#include <QRandomGenerator>
#include <QString>
#include <QtEndian>
#include <cstdint>
#include <cstdlib>
#include <plist/plist.h>
#include <zlib.h>

// Test material written from the formats' own rules, independent of the code under
// test: Mach-O files, kext folders, and raw archive surgery.
namespace MkextTestKexts {

constexpr uint32_t I386 = 7;
constexpr uint32_t X86_64 = 0x01000007;
constexpr uint32_t PPC = 18;

// Big-endian word access.
inline uint32_t word(const QByteArray &bytes, qsizetype at) {
    return qFromBigEndian<quint32>(bytes.constData() + at);
}
inline void setWord(QByteArray &bytes, qsizetype at, uint32_t value) {
    qToBigEndian<quint32>(value, bytes.data() + at);
}

// A thin Mach-O header for `cputype` (little-endian for Intel, big for ppc), then `payload`.
inline QByteArray thinMachO(uint32_t cputype, const QByteArray &payload) {
    const bool is64 = cputype & 0x01000000;
    const uint32_t magic = is64 ? 0xfeedfacf : 0xfeedface;
    const uint32_t subtype = (cputype & 0xffffff) == I386 ? 3 : 0;
    const uint32_t fields[] = {magic, cputype, subtype, is64 ? 11u : 1u, 0, 0, 0, 0};
    QByteArray out;
    for (int i = 0; i < (is64 ? 8 : 7); ++i) {
        char buffer[4];
        if ((cputype & 0xffffff) == PPC)
            qToBigEndian<quint32>(fields[i], buffer);
        else
            qToLittleEndian<quint32>(fields[i], buffer);
        out.append(buffer, 4);
    }
    return out + payload;
}

// A universal file of the thin files, each at a 4096-byte boundary.
inline QByteArray fatMachO(const QList<QPair<uint32_t, QByteArray>> &slices) {
    QByteArray out(8 + 20 * slices.size(), '\0');
    setWord(out, 0, 0xcafebabe);
    setWord(out, 4, uint32_t(slices.size()));
    for (qsizetype i = 0; i < slices.size(); ++i) {
        out.append((4096 - out.size() % 4096) % 4096, '\0');
        const qsizetype at = 8 + 20 * i;
        setWord(out, at, slices[i].first);
        setWord(out, at + 4, (slices[i].first & 0xffffff) == I386 ? 3 : 0);
        setWord(out, at + 8, uint32_t(out.size()));
        setWord(out, at + 12, uint32_t(slices[i].second.size()));
        setWord(out, at + 16, 12);
        out.append(slices[i].second);
    }
    return out;
}

inline QByteArray randomBytes(qsizetype size, quint32 seed) {
    QRandomGenerator generator(seed);
    QByteArray bytes(size, Qt::Uninitialized);
    for (char &c : bytes)
        c = char(generator.bounded(256));
    return bytes;
}

inline bool writeFile(const QString &path, const QByteArray &bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

inline QByteArray readFile(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Writes <folder>/<name>.kext with an Info.plist holding `extraXml` (key/value pairs)
// besides the identifier, version and, when `executable` is not null, the executable
// name and file. Returns the bundle path.
inline QString writeKext(const QString &folder, const QString &name, const QString &identifier,
                         const QString &version, const QByteArray &executable,
                         const QString &extraXml = QString()) {
    const QString bundle = folder + '/' + name + ".kext";
    QString xml =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC "
        "\"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
        "<plist version=\"1.0\">\n<dict>\n"
        "<key>CFBundleIdentifier</key><string>" +
        identifier + "</string><key>CFBundleVersion</key><string>" + version + "</string>";
    if (!executable.isNull())
        xml += "<key>CFBundleExecutable</key><string>" + name.toHtmlEscaped() + "</string>";
    writeFile(bundle + "/Contents/Info.plist", (xml + extraXml + "</dict>\n</plist>\n").toUtf8());
    if (!executable.isNull())
        writeFile(bundle + "/Contents/MacOS/" + name, executable);
    return bundle;
}

// A fresh length and checksum for the archive at `base`.
inline void reseal(QByteArray &bytes, qsizetype base = 0) {
    const qsizetype length = bytes.size() - base;
    setWord(bytes, base + 8, uint32_t(length));
    const auto *summed = reinterpret_cast<const Bytef *>(bytes.constData() + base + 16);
    setWord(bytes, base + 12, uint32_t(adler32(adler32(0, Z_NULL, 0), summed, uInt(length - 16))));
}

// A tree, or the Info.plist of a bundle, as libplist's XML (key order kept), for
// comparisons.
inline QByteArray xmlOf(plist_t node) {
    char *xml = nullptr;
    uint32_t length = 0;
    plist_to_xml(node, &xml, &length);
    QByteArray text(xml, qsizetype(length));
    free(xml);
    return text;
}
inline QByteArray infoXml(const QString &plistPath) {
    const QByteArray bytes = readFile(plistPath);
    plist_t root = nullptr;
    plist_from_memory(bytes.constData(), uint32_t(bytes.size()), &root);
    if (!root)
        return QByteArray("unreadable");
    const QByteArray text = xmlOf(root);
    plist_free(root);
    return text;
}

// Every file below `folder`, relative, sorted.
inline QStringList tree(const QString &folder) {
    QStringList files;
    QDirIterator it(folder,
                    QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        files << QDir(folder).relativeFilePath(it.next());
    files.sort();
    return files;
}

} // namespace MkextTestKexts

#include "MkextTestKexts.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QtEndian>
#include <cstdlib>
#include <zlib.h>

namespace MkextTestKexts {

QByteArray thinMachO(uint32_t cputype, const QByteArray &payload) {
    const bool is64 = cputype & 0x01000000;
    const bool big = (cputype & 0xffffff) == PPC;
    const uint32_t fields[] = {is64 ? 0xfeedfacfu : 0xfeedfaceu,
                               cputype,
                               (cputype & 0xffffff) == I386 ? 3u : 0u,
                               is64 ? 11u : 1u,
                               0,
                               0,
                               0,
                               0};
    QByteArray out;
    for (int i = 0; i < (is64 ? 8 : 7); ++i) {
        char buffer[4];
        if (big)
            qToBigEndian<quint32>(fields[i], buffer);
        else
            qToLittleEndian<quint32>(fields[i], buffer);
        out.append(buffer, 4);
    }
    return out + payload;
}

QByteArray fatMachO(const QList<QPair<uint32_t, QByteArray>> &slices) {
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

QByteArray randomBytes(qsizetype size, quint32 seed) {
    QRandomGenerator generator(seed);
    QByteArray bytes(size, Qt::Uninitialized);
    for (char &c : bytes)
        c = char(generator.bounded(256));
    return bytes;
}

bool writeFile(const QString &path, const QByteArray &bytes) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

QByteArray readFile(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString writeKext(const QString &folder, const QString &name, const QString &identifier,
                  const QString &version, const QByteArray &executable, const QString &extraXml) {
    const QString bundle = folder + QLatin1Char('/') + name + QStringLiteral(".kext");
    QString xml = QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                 "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                                 "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                                 "<plist version=\"1.0\">\n<dict>\n"
                                 "\t<key>CFBundleIdentifier</key>\n\t<string>%1</string>\n"
                                 "\t<key>CFBundleVersion</key>\n\t<string>%2</string>\n")
                      .arg(identifier, version);
    if (!executable.isNull())
        xml += QStringLiteral("\t<key>CFBundleExecutable</key>\n\t<string>%1</string>\n")
                   .arg(name.toHtmlEscaped());
    xml += extraXml + QStringLiteral("</dict>\n</plist>\n");
    writeFile(bundle + QStringLiteral("/Contents/Info.plist"), xml.toUtf8());
    if (!executable.isNull())
        writeFile(bundle + QStringLiteral("/Contents/MacOS/") + name, executable);
    return bundle;
}

uint32_t word(const QByteArray &bytes, qsizetype at) {
    return qFromBigEndian<quint32>(bytes.constData() + at);
}

void setWord(QByteArray &bytes, qsizetype at, uint32_t value) {
    qToBigEndian<quint32>(value, bytes.data() + at);
}

void reseal(QByteArray &bytes, qsizetype base) {
    const qsizetype length = bytes.size() - base;
    setWord(bytes, base + 8, uint32_t(length));
    const uLong sum =
        adler32(adler32(0, Z_NULL, 0),
                reinterpret_cast<const Bytef *>(bytes.constData() + base + 16), uInt(length - 16));
    setWord(bytes, base + 12, uint32_t(sum));
}

QByteArray xmlOf(plist_t node) {
    char *xml = nullptr;
    uint32_t length = 0;
    plist_to_xml(node, &xml, &length);
    QByteArray text(xml, qsizetype(length));
    free(xml);
    return text;
}

QByteArray infoXml(const QString &plistPath) {
    const QByteArray bytes = readFile(plistPath);
    plist_t root = nullptr;
    plist_from_memory(bytes.constData(), uint32_t(bytes.size()), &root);
    if (!root)
        return QByteArray("unreadable");
    const QByteArray text = xmlOf(root);
    plist_free(root);
    return text;
}

QStringList tree(const QString &folder) {
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

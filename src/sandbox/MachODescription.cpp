#include "sandbox/MachODescription.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>
#include <optional>

namespace {

constexpr quint32 abi64 = 0x01000000;

std::optional<quint32> word(const QByteArray &bytes, qsizetype offset, bool bigEndian) {
    if (offset < 0 || offset + 4 > bytes.size())
        return std::nullopt;
    const char *p = bytes.constData() + offset;
    return bigEndian ? qFromBigEndian<quint32>(p) : qFromLittleEndian<quint32>(p);
}

QString processor(quint32 cpuType) {
    switch (cpuType) {
    case 7:
        return QStringLiteral("i386");
    case 7 | abi64:
        return QStringLiteral("x86_64");
    case 18:
        return QStringLiteral("ppc");
    case 18 | abi64:
        return QStringLiteral("ppc64");
    default:
        return QStringLiteral("cputype (%1)").arg(cpuType);
    }
}

QString fileTypeWord(quint32 fileType) {
    switch (fileType) {
    case 1:
        return QStringLiteral("object");
    case 2:
        return QStringLiteral("executable");
    case 6:
        return QStringLiteral("dynamically linked shared library");
    case 8:
        return QStringLiteral("bundle");
    case 11:
        return QStringLiteral("kext bundle");
    default:
        return QStringLiteral("filetype=%1").arg(fileType);
    }
}

// The thin description of the image at `offset`, absent when it is no Mach-O header.
std::optional<QString> thin(const QByteArray &bytes, qsizetype offset) {
    const std::optional<quint32> bigMagic = word(bytes, offset, true);
    if (!bigMagic)
        return std::nullopt;
    bool bigEndian;
    bool is64;
    switch (*bigMagic) {
    case 0xfeedface:
    case 0xfeedfacf:
        bigEndian = true;
        is64 = *bigMagic == 0xfeedfacf;
        break;
    case 0xcefaedfe:
    case 0xcffaedfe:
        bigEndian = false;
        is64 = *bigMagic == 0xcffaedfe;
        break;
    default:
        return std::nullopt;
    }
    const std::optional<quint32> cpu = word(bytes, offset + 4, bigEndian);
    const std::optional<quint32> type = word(bytes, offset + 12, bigEndian);
    if (!cpu || !type)
        return std::nullopt;
    return QStringLiteral("Mach-O%1 %2 %3")
        .arg(is64 ? QStringLiteral(" 64-bit") : QString(), fileTypeWord(*type), processor(*cpu));
}

std::optional<QString> universal(const QByteArray &bytes, const QString &path) {
    if (word(bytes, 0, true) != 0xcafebabe)
        return std::nullopt;
    const quint32 count = word(bytes, 4, true).value_or(0);
    // Java class files share the magic; their "count" is a version number far above any
    // sensible number of architectures.
    if (count == 0 || count > 20)
        return std::nullopt;
    QString text = QStringLiteral("Mach-O universal binary with %1 architecture%2")
                       .arg(count)
                       .arg(count == 1 ? QString() : QStringLiteral("s"));
    for (quint32 i = 0; i < count; ++i) {
        const qsizetype entry = 8 + qsizetype(i) * 20;
        const std::optional<quint32> cpu = word(bytes, entry, true);
        const std::optional<quint32> offset = word(bytes, entry + 8, true);
        if (!cpu || !offset)
            break;
        text +=
            QStringLiteral("\n%1 (for architecture %2):\t%3")
                .arg(path, processor(*cpu), thin(bytes, *offset).value_or(QStringLiteral("data")));
    }
    return text;
}

} // namespace

QString MachODescription::describe(const QByteArray &bytes, const QString &pathAsGiven) {
    if (bytes.isEmpty())
        return QStringLiteral("empty");
    if (std::optional<QString> text = universal(bytes, pathAsGiven))
        return *text;
    return thin(bytes, 0).value_or(QStringLiteral("data"));
}

QString MachODescription::describeFile(const QString &path) {
    const QFileInfo info(path);
    if (info.isDir())
        return QStringLiteral("directory");
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("cannot open `%1' (No such file or directory)").arg(path);
    return describe(file.readAll(), path);
}

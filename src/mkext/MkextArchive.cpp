#include "mkext/MkextArchive.h"

#include "mkext/Lzss.h"
#include "mkext/MachOSlices.h"
#include "mkext/MkextFormat.h"
#include "mkext/ZlibCodec.h"

#include <QFileInfo>
#include <cstdlib>

using namespace MkextFormat;

namespace {

MkextArchive::Opened failed(const QString &message) {
    return {std::nullopt, message};
}

QString architectureMissing(const QString &arch) {
    return QStringLiteral("Architecture %1 not found in mkext.").arg(arch);
}

// A path component that cannot leave the folder it is joined to.
QString safeComponent(QString name) {
    name = name.section(QLatin1Char('/'), -1);
    name.remove(QChar(0));
    if (name == QLatin1String(".") || name == QLatin1String(".."))
        return {};
    return name;
}

} // namespace

MkextArchive::Opened MkextArchive::open(const QByteArray &file, const QString &arch) {
    return open(file, arch, Limits{});
}

MkextArchive::Opened MkextArchive::open(const QByteArray &file, const QString &arch,
                                        const Limits &limits) {
    std::optional<uint32_t> wanted;
    if (!arch.isEmpty()) {
        wanted = MachOSlices::cpuType(arch);
        if (!wanted)
            return failed(QStringLiteral("Unknown architecture %1.").arg(arch));
    }
    MkextArchive archive;
    archive.m_file = file;
    archive.m_length = file.size();
    if (const auto entries = MachOSlices::fatEntries(file)) {
        const MachOSlices::FatEntry *chosen = nullptr;
        const uint32_t lookFor = wanted.value_or(MachOSlices::hostCpuType());
        for (const auto &entry : *entries)
            if (entry.cputype == lookFor && !chosen)
                chosen = &entry;
        if (!chosen && wanted)
            return failed(architectureMissing(arch));
        if (!chosen)
            chosen = &entries->first();
        // A slice reaching past the end is cut where the file ends; the length check
        // below then reports it.
        archive.m_base = qMin<qsizetype>(chosen->offset, file.size());
        archive.m_length = qMin<qsizetype>(chosen->size, file.size() - archive.m_base);
    }
    const qsizetype base = archive.m_base;
    const qsizetype length = archive.m_length;
    if (length < CoreHeaderSize || word(file, base) != Magic || word(file, base + 4) != Signature)
        return failed(QStringLiteral("Bad mkext magic/signature."));
    archive.m_cputype = word(file, base + 24);
    if (wanted && archive.m_cputype != *wanted && archive.m_cputype != CpuTypeAny)
        return failed(architectureMissing(arch));
    const quint32 declared = word(file, base + 8);
    if (declared != quint64(length))
        return failed(QStringLiteral("Mkext length field %1 does not match mkext actual size %2.")
                          .arg(declared)
                          .arg(length));
    const uint32_t sum =
        ZlibCodec::adler32(file.constData() + base + ChecksumStart, length - ChecksumStart);
    if (sum != word(file, base + 12))
        return failed(QStringLiteral("Mkext checksum error."));
    archive.m_maxEntrySize = limits.maxEntrySize;
    const uint32_t version = word(file, base + 16);
    if (version == Version2) {
        archive.m_version = 2;
        if (!archive.readVersion2(limits))
            return failed(archive.damagedText());
    } else if (version == Version1) {
        archive.m_version = 1;
        if (!archive.readVersion1(limits))
            return failed(archive.damagedText());
    } else {
        return failed(QStringLiteral("Unsupported mkext version 0x%1.")
                          .arg(version, 8, 16, QLatin1Char('0')));
    }
    return {std::move(archive), QString()};
}

QString MkextArchive::damagedText() const {
    return QStringLiteral("Can't read mkext%1 archive.").arg(m_version);
}

std::optional<QByteArray> MkextArchive::entryBytes(quint32 offset, quint32 stored, quint32 full,
                                                   bool lzss) const {
    const quint32 span = stored ? stored : full;
    if (quint64(offset) + span > quint64(m_length) || qsizetype(full) > m_maxEntrySize)
        return std::nullopt;
    // Neither coder can expand beyond its best ratio (zlib about 1032:1, a match of 18
    // bytes in 2 plus a flag bit for this ring coder), so larger claims are lies that
    // would only cost an allocation.
    const quint64 mostExpanded = lzss ? quint64(stored) * 9 + 18 : quint64(stored) * 1032 + 64;
    if (stored && full > mostExpanded)
        return std::nullopt;
    const char *at = m_file.constData() + m_base + offset;
    if (!stored)
        return QByteArray(at, span);
    // The decoders read the archive's own bytes in place: no copy of the entry first.
    const QByteArray raw = QByteArray::fromRawData(at, span);
    return lzss ? Lzss::decompress(raw, full) : ZlibCodec::inflate(raw, full);
}

bool MkextArchive::readVersion2(const Limits &limits) {
    if (m_length < Version2HeaderSize)
        return false;
    const quint32 plistOffset = word(m_file, m_base + 32);
    const quint32 plistStored = word(m_file, m_base + 36);
    const quint32 plistFull = word(m_file, m_base + 40);
    if (qsizetype(plistFull) > limits.maxPlistSize || plistOffset < Version2HeaderSize)
        return false;
    const auto text = entryBytes(plistOffset, plistStored, plistFull, false);
    if (!text)
        return false;
    const PlistPtr root = IOKitPlist::parse(*text, limits.plist);
    if (!root || plist_get_node_type(root.get()) != PLIST_DICT)
        return false;
    plist_t list = plist_dict_get_item(root.get(), InfoDictionariesKey);
    if (!list || plist_get_node_type(list) != PLIST_ARRAY)
        return false;
    for (uint32_t i = 0; i < plist_array_get_size(list); ++i) {
        plist_t item = plist_array_get_item(list, i);
        if (plist_get_node_type(item) != PLIST_DICT)
            return false;
        Kext kext;
        kext.info = std::shared_ptr<void>(plist_copy(item), plist_free);
        plist_t path = plist_dict_get_item(item, BundlePathKey);
        if (path && plist_get_node_type(path) == PLIST_STRING) {
            char *value = nullptr;
            plist_get_string_val(path, &value);
            kext.bundlePath = QString::fromUtf8(value);
            free(value);
        }
        plist_t executable = plist_dict_get_item(item, ExecutableKey);
        if (executable) {
            uint64_t offset = 0;
            if (plist_get_node_type(executable) != PLIST_UINT)
                return false;
            plist_get_uint_val(executable, &offset);
            if (offset < quint64(Version2HeaderSize) ||
                offset + FileEntryHeaderSize > quint64(m_length))
                return false;
            kext.hasExecutable = true;
            kext.executableOffset = quint32(offset);
        }
        for (const char *key : {BundlePathKey, ExecutableKey, ExecutableRelativePathKey})
            plist_dict_remove_item(kext.info.get(), key);
        m_kexts.append(kext);
    }
    return true;
}

bool MkextArchive::readVersion1(const Limits &limits) {
    const quint32 count = word(m_file, m_base + 20);
    if (quint64(count) * Version1KextRecordSize + CoreHeaderSize > quint64(m_length))
        return false;
    for (quint32 i = 0; i < count; ++i) {
        const qsizetype record = m_base + CoreHeaderSize + qsizetype(i) * Version1KextRecordSize;
        const quint32 plistFull = word(m_file, record + 8);
        if (plistFull == 0 || qsizetype(plistFull) > limits.maxPlistSize)
            return false;
        const auto text =
            entryBytes(word(m_file, record), word(m_file, record + 4), plistFull, true);
        if (!text)
            return false;
        // Plain Info.plist files, which the kernel's dialect reader also takes.
        PlistPtr info = IOKitPlist::parse(*text, limits.plist);
        if (!info || plist_get_node_type(info.get()) != PLIST_DICT)
            return false;
        Kext kext;
        kext.info = std::shared_ptr<void>(info.release(), plist_free);
        kext.fullSize = word(m_file, record + 24);
        if (kext.fullSize != 0) {
            kext.hasExecutable = true;
            kext.executableOffset = word(m_file, record + 16);
            kext.compressedSize = word(m_file, record + 20);
        }
        m_kexts.append(kext);
    }
    return true;
}

std::optional<QByteArray> MkextArchive::executable(const Kext &kext) const {
    if (!kext.hasExecutable)
        return std::nullopt;
    if (m_version == 1)
        return entryBytes(kext.executableOffset, kext.compressedSize, kext.fullSize, true);
    const quint32 at = kext.executableOffset;
    if (quint64(at) + FileEntryHeaderSize > quint64(m_length))
        return std::nullopt;
    return entryBytes(at + FileEntryHeaderSize, word(m_file, m_base + at),
                      word(m_file, m_base + at + 4), false);
}

std::optional<QString> MkextArchive::infoString(const Kext &kext, const char *key) {
    plist_t node = plist_dict_get_item(kext.info.get(), key);
    if (!node || plist_get_node_type(node) != PLIST_STRING)
        return std::nullopt;
    char *value = nullptr;
    plist_get_string_val(node, &value);
    const QString text = QString::fromUtf8(value);
    free(value);
    return text;
}

QString MkextArchive::kextName(const Kext &kext) {
    QString name;
    if (!kext.bundlePath.isEmpty()) {
        name = safeComponent(kext.bundlePath);
        if (name.endsWith(QLatin1String(".kext")))
            name.chop(5);
    }
    if (name.isEmpty())
        name = safeComponent(infoString(kext, "CFBundleExecutable").value_or(QString()));
    if (name.isEmpty())
        name = safeComponent(infoString(kext, "CFBundleIdentifier")
                                 .value_or(QString())
                                 .section(QLatin1Char('.'), -1));
    return safeComponent(name).isEmpty() ? QStringLiteral("Unnamed") : name;
}

QString MkextArchive::executableName(const Kext &kext) {
    const QString name = safeComponent(infoString(kext, "CFBundleExecutable").value_or(QString()));
    return name.isEmpty() ? kextName(kext) : name;
}

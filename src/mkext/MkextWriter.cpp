#include "mkext/MkextWriter.h"

#include "mkext/IOKitPlist.h"
#include "mkext/MachOSlices.h"
#include "mkext/MkextFormat.h"
#include "mkext/OrderedWork.h"
#include "mkext/ZlibCodec.h"

#include <vector>

using namespace MkextFormat;

namespace {

// {compressed size or 0, full size} followed by the bytes as stored, in a buffer of
// exactly that size.
QByteArray entry(const QByteArray &plain, int level) {
    const QByteArray packed = ZlibCodec::deflate(plain, level);
    const bool shrinks = !packed.isEmpty() && packed.size() < plain.size();
    const QByteArray &stored = shrinks ? packed : plain;
    QByteArray out;
    out.reserve(FileEntryHeaderSize + stored.size());
    appendWord(out, shrinks ? uint32_t(packed.size()) : 0);
    appendWord(out, uint32_t(plain.size()));
    out.append(stored);
    return out;
}

// One kext made ready for every processor: its entry for each (absent where it has no
// code for it), or nothing at all when its executable could not be read.
struct PackedKext {
    bool unreadable = false;
    QList<std::optional<QByteArray>> entries;
};

PackedKext pack(const KextSource &kext, const QList<uint32_t> &cputypes, int level) {
    PackedKext packed;
    if (!kext.hasExecutable)
        return packed;
    const std::optional<QByteArray> file = kext.loadExecutable();
    if (!file) {
        packed.unreadable = true;
        return packed;
    }
    for (uint32_t cputype : cputypes) {
        const std::optional<QByteArray> code = MachOSlices::code(*file, cputype);
        packed.entries << (code ? std::optional(entry(*code, level)) : std::nullopt);
    }
    return packed;
}

// One processor's archive as it grows: its pieces in order (the header first, then each
// entry as it came, without copying them into one buffer) and its dictionary list.
class ThinArchive {
public:
    explicit ThinArchive(uint32_t cputype) : m_cputype(cputype), m_root(plist_new_dict()) {
        m_list = plist_new_array();
        plist_dict_set_item(m_root.get(), InfoDictionariesKey, m_list);
        m_pieces << QByteArray(Version2HeaderSize, '\0');
        m_size = Version2HeaderSize;
    }

    // `code` is the kext's entry, or null for a kext without an executable.
    void add(const KextSource &kext, const QByteArray *code) {
        plist_t info = plist_copy(kext.info.get());
        plist_dict_set_item(info, BundlePathKey,
                            plist_new_string(kext.bundlePath.toUtf8().constData()));
        if (code) {
            plist_dict_set_item(info, ExecutableKey, plist_new_uint(uint64_t(m_size)));
            m_pieces << *code;
            m_size += code->size();
        }
        plist_array_append_item(m_list, info);
    }

    // Appends the dictionaries and fills in the header; false when no kext came.
    bool finish(int level) {
        const uint32_t count = plist_array_get_size(m_list);
        if (count == 0)
            return false;
        const QByteArray text = IOKitPlist::serialize(m_root.get()) + QByteArray(1, '\0');
        const qsizetype plistOffset = m_size;
        const QByteArray packed = ZlibCodec::deflate(text, level);
        const bool shrinks = !packed.isEmpty() && packed.size() < text.size();
        m_pieces << (shrinks ? packed : text);
        m_size += m_pieces.last().size();

        QByteArray &header = m_pieces.first();
        setWord(header, 0, Magic);
        setWord(header, 4, Signature);
        setWord(header, 8, uint32_t(m_size));
        setWord(header, 16, Version2);
        setWord(header, 20, count);
        setWord(header, 24, m_cputype);
        setWord(header, 28, MachOSlices::subtypeAll(m_cputype));
        setWord(header, 32, uint32_t(plistOffset));
        setWord(header, 36, shrinks ? uint32_t(packed.size()) : 0);
        setWord(header, 40, uint32_t(text.size()));
        uint32_t sum =
            ZlibCodec::adler32(header.constData() + ChecksumStart, header.size() - ChecksumStart);
        for (qsizetype i = 1; i < m_pieces.size(); ++i)
            sum = ZlibCodec::adler32(m_pieces[i].constData(), m_pieces[i].size(), sum);
        setWord(header, 12, sum);
        return true;
    }

    uint32_t cputype() const { return m_cputype; }
    qsizetype size() const { return m_size; }
    const QList<QByteArray> &pieces() const { return m_pieces; }

private:
    uint32_t m_cputype;
    PlistPtr m_root;
    plist_t m_list = nullptr;
    QList<QByteArray> m_pieces;
    qsizetype m_size = 0;
};

// Streams the kexts into one archive per processor: a few are packed at a time in
// parallel and taken back in order, so the output does not depend on which thread
// finished first.
std::vector<ThinArchive> streamKexts(const QList<KextSource> &kexts,
                                     const QList<uint32_t> &cputypes, int level,
                                     QStringList &warnings) {
    std::vector<ThinArchive> archives;
    for (uint32_t cputype : cputypes)
        archives.emplace_back(cputype);
    OrderedWork<PackedKext> work(kexts.size(), [&kexts, &cputypes, level](qsizetype i) {
        return pack(kexts[i], cputypes, level);
    });
    for (const KextSource &kext : kexts) {
        const PackedKext packed = work.next();
        if (packed.unreadable) {
            warnings << QStringLiteral("%1 lacks its executable; omitting from mkext.")
                            .arg(kext.bundlePath);
            continue;
        }
        for (size_t i = 0; i < archives.size(); ++i) {
            if (!kext.hasExecutable)
                archives[i].add(kext, nullptr);
            else if (packed.entries[i])
                archives[i].add(kext, &*packed.entries[i]);
            // else: nothing of this kext runs on this processor
        }
    }
    return archives;
}

bool writeAll(QIODevice &out, const QByteArray &bytes) {
    return out.write(bytes) == bytes.size();
}

} // namespace

QByteArray MkextWriter::archive(const QList<KextSource> &kexts, uint32_t cputype, int level) {
    QStringList warnings;
    std::vector<ThinArchive> archives = streamKexts(kexts, {cputype}, level, warnings);
    if (!archives.front().finish(level))
        return {};
    QByteArray out;
    out.reserve(archives.front().size());
    for (const QByteArray &piece : archives.front().pieces())
        out.append(piece);
    return out;
}

MkextWriter::Result MkextWriter::write(const QList<KextSource> &kexts,
                                       const QList<uint32_t> &cputypes, QIODevice &out, int level) {
    Result result;
    std::vector<ThinArchive> archives = streamKexts(kexts, cputypes, level, result.warnings);
    QList<MachOSlices::FatEntry> entries;
    QList<const ThinArchive *> kept;
    for (ThinArchive &archive : archives) {
        if (!archive.finish(level)) {
            result.warnings << QStringLiteral(
                                   "No kexts found for architecture %1; skipping architecture.")
                                   .arg(MachOSlices::archName(archive.cputype()));
            continue;
        }
        MachOSlices::FatEntry entry;
        entry.cputype = archive.cputype();
        entry.cpusubtype = MachOSlices::subtypeAll(entry.cputype);
        entry.size = uint32_t(archive.size());
        entries << entry;
        kept << &archive;
    }
    if (entries.isEmpty())
        return result;
    result.empty = false;

    // The fat container piece by piece: its header, then each archive at its boundary.
    entries = MachOSlices::fatLayout(entries);
    const QByteArray header = MachOSlices::fatHeader(entries);
    bool ok = writeAll(out, header);
    qsizetype at = header.size();
    for (qsizetype i = 0; ok && i < entries.size(); ++i) {
        ok = writeAll(out, QByteArray(qsizetype(entries[i].offset) - at, '\0'));
        for (const QByteArray &piece : kept[i]->pieces())
            ok = ok && writeAll(out, piece);
        at = qsizetype(entries[i].offset) + kept[i]->size();
    }
    result.written = ok;
    return result;
}

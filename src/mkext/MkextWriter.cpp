#include "mkext/MkextWriter.h"

#include "mkext/IOKitPlist.h"
#include "mkext/MachOSlices.h"
#include "mkext/MkextFormat.h"
#include "mkext/ZlibCodec.h"

using namespace MkextFormat;

namespace {

// {compressed size or 0, full size} followed by the bytes as stored.
void appendEntry(QByteArray &out, const QByteArray &plain, int level) {
    const QByteArray packed = ZlibCodec::deflate(plain, level);
    const bool shrinks = !packed.isEmpty() && packed.size() < plain.size();
    appendWord(out, shrinks ? uint32_t(packed.size()) : 0);
    appendWord(out, uint32_t(plain.size()));
    out.append(shrinks ? packed : plain);
}

} // namespace

QByteArray MkextWriter::archive(const QList<KextSource> &kexts, uint32_t cputype, int level) {
    QByteArray out(Version2HeaderSize, '\0');
    PlistPtr root(plist_new_dict());
    plist_t list = plist_new_array();
    plist_dict_set_item(root.get(), InfoDictionariesKey, list);
    for (const KextSource &kext : kexts) {
        std::optional<QByteArray> code;
        if (kext.hasExecutable) {
            code = MachOSlices::code(kext.executable, cputype);
            if (!code)
                continue; // nothing of this kext runs on this processor
        }
        plist_t info = plist_copy(kext.info.get());
        plist_dict_set_item(info, BundlePathKey,
                            plist_new_string(kext.bundlePath.toUtf8().constData()));
        if (code) {
            plist_dict_set_item(info, ExecutableKey, plist_new_uint(uint64_t(out.size())));
            appendEntry(out, *code, level);
        }
        plist_array_append_item(list, info);
    }
    const uint32_t count = plist_array_get_size(list);
    if (count == 0)
        return {};
    const QByteArray text = IOKitPlist::serialize(root.get()) + QByteArray(1, '\0');
    const qsizetype plistOffset = out.size();
    const QByteArray packed = ZlibCodec::deflate(text, level);
    const bool shrinks = !packed.isEmpty() && packed.size() < text.size();
    out.append(shrinks ? packed : text);

    setWord(out, 0, Magic);
    setWord(out, 4, Signature);
    setWord(out, 8, uint32_t(out.size()));
    setWord(out, 16, Version2);
    setWord(out, 20, count);
    setWord(out, 24, cputype);
    setWord(out, 28, MachOSlices::subtypeAll(cputype));
    setWord(out, 32, uint32_t(plistOffset));
    setWord(out, 36, shrinks ? uint32_t(packed.size()) : 0);
    setWord(out, 40, uint32_t(text.size()));
    setWord(out, 12,
            ZlibCodec::adler32(out.constData() + ChecksumStart, out.size() - ChecksumStart));
    return out;
}

MkextWriter::Result MkextWriter::build(const QList<KextSource> &kexts,
                                       const QList<uint32_t> &cputypes, int level) {
    Result result;
    QList<QPair<MachOSlices::FatEntry, QByteArray>> slices;
    for (uint32_t cputype : cputypes) {
        QByteArray thin = archive(kexts, cputype, level);
        if (thin.isEmpty()) {
            result.warnings << QStringLiteral(
                                   "No kexts found for architecture %1; skipping architecture.")
                                   .arg(MachOSlices::archName(cputype));
            continue;
        }
        MachOSlices::FatEntry entry;
        entry.cputype = cputype;
        entry.cpusubtype = MachOSlices::subtypeAll(cputype);
        slices.append({entry, thin});
    }
    if (!slices.isEmpty())
        result.bytes = MachOSlices::fat(slices);
    return result;
}

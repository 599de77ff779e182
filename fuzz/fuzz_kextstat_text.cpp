// The kext status listing parser on arbitrary text: rows, their identifier and version,
// and the page's filter.

#include "loaded/KextStatText.h"
#include "loaded/LoadedKextList.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    LoadedKextList list;
    list.refresh(text);
    for (const QString &row : list.rows()) {
        const KextRowParts parts = kextRowParts(row);
        if (!row.startsWith(parts.identifier) || kextRowIdentifier(row) != parts.identifier)
            abort();
    }
    (void)list.filtered(text.left(3));
    (void)kextRowText(text, kextStatNameColumn(text));
    return 0;
}

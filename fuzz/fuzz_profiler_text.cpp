// The system profiler's two overviews as the report cuts them at fixed positions: the
// input up to its first NUL is the software overview, the rest the hardware overview.

#include "loaded/ReportOverview.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const qsizetype split = bytes.indexOf('\0');
    const QString software = QString::fromUtf8(split < 0 ? bytes : bytes.left(split));
    const QString hardware = QString::fromUtf8(split < 0 ? QByteArray() : bytes.mid(split + 1));
    (void)ReportOverview::defaultFileName(software);
    (void)ReportOverview::sections(software, hardware);
    return 0;
}

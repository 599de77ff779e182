// The archive tool's error text as the unpack page takes it: strict UTF-8 decoding (text
// that is not UTF-8 counts as none) and the alert made of what is left.

#include "exec/ProcessRunner.h"
#include "inspect/MkextUnpackTask.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const std::optional<QString> text = ProcessRunner::decodeUtf8(bytes);
    if (!text)
        return 0;
    const QString alert = MkextUnpackTask::alertText(*text);
    if (!text->isEmpty() && alert.isEmpty())
        abort(); // a failure must never read as an empty alert
    return 0;
}

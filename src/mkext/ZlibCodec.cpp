#include "mkext/ZlibCodec.h"

#include <QThreadPool>
#include <QtConcurrent>
#include <climits>
#include <zlib.h>

namespace {
// zlib counts in uInt; anything larger is refused rather than split.
bool fitsZlib(qsizetype size) {
    return size >= 0 && quint64(size) <= UINT_MAX;
}
} // namespace

std::optional<QByteArray> ZlibCodec::inflate(const QByteArray &compressed, qsizetype fullSize) {
    if (!fitsZlib(fullSize) || !fitsZlib(compressed.size()))
        return std::nullopt;
    QByteArray out(fullSize, Qt::Uninitialized);
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK)
        return std::nullopt;
    stream.next_in = reinterpret_cast<Bytef *>(const_cast<char *>(compressed.constData()));
    stream.avail_in = uInt(compressed.size());
    stream.next_out = reinterpret_cast<Bytef *>(out.data());
    stream.avail_out = uInt(fullSize);
    int status = ::inflate(&stream, Z_FINISH);
    // A stream that fills the buffer exactly but has more to give is too long.
    if (status == Z_BUF_ERROR && stream.avail_out == 0 && stream.avail_in > 0) {
        unsigned char probe;
        stream.next_out = &probe;
        stream.avail_out = 1;
        status = ::inflate(&stream, Z_FINISH);
        if (stream.avail_out == 0)
            status = Z_DATA_ERROR;
    }
    const bool complete = status == Z_STREAM_END && stream.total_out == uLong(fullSize);
    inflateEnd(&stream);
    if (!complete)
        return std::nullopt;
    return out;
}

QByteArray ZlibCodec::deflate(const QByteArray &plain, int level) {
    if (!fitsZlib(plain.size()))
        return {};
    uLongf bound = compressBound(uLong(plain.size()));
    QByteArray out(qsizetype(bound), Qt::Uninitialized);
    if (compress2(reinterpret_cast<Bytef *>(out.data()), &bound,
                  reinterpret_cast<const Bytef *>(plain.constData()), uLong(plain.size()),
                  level) != Z_OK)
        return {};
    out.truncate(qsizetype(bound));
    return out;
}

uint32_t ZlibCodec::adler32(const char *data, qsizetype size, uint32_t sumBefore) {
    // A whole archive is checked before anything is unpacked from it, so that wait is
    // shortened by summing large inputs in parts on the thread pool; Adler-32 sums of
    // consecutive parts combine exactly into the sum of the whole.
    constexpr qsizetype partSize = qsizetype(2) << 20;
    const qsizetype parts =
        qMin<qsizetype>(QThreadPool::globalInstance()->maxThreadCount(), size / partSize);
    if (parts < 2)
        return uint32_t(adler32_z(sumBefore, reinterpret_cast<const Bytef *>(data), size_t(size)));
    const qsizetype step = size / parts;
    QList<QFuture<uLong>> sums;
    for (qsizetype i = 1; i < parts; ++i) {
        const qsizetype length = i + 1 == parts ? size - i * step : step;
        sums << QtConcurrent::run([at = data + i * step, length] {
            return adler32_z(1, reinterpret_cast<const Bytef *>(at), size_t(length));
        });
    }
    uLong sum = adler32_z(sumBefore, reinterpret_cast<const Bytef *>(data), size_t(step));
    for (qsizetype i = 1; i < parts; ++i) {
        const qsizetype length = i + 1 == parts ? size - i * step : step;
        sum = adler32_combine(sum, sums[i - 1].result(), z_off_t(length));
    }
    return uint32_t(sum);
}

#pragma once

#include <QByteArray>
#include <QString>

// Kext bundles on disk for the benchmarks: an Info.plist of the usual size (the keys the
// loaders read and one matching personality), a small universal executable and a
// resource file.
namespace bench {

QByteArray infoPlist(const QString &id, const QString &name, const QString &library);
void writeFile(const QString &path, const QByteArray &bytes);
// The executable is named after the bundle folder; `library` is one more dependency.
void writeKext(const QString &bundle, const QString &id, const QString &library);

} // namespace bench

#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>
#include <cstdint>
#include <plist/plist.h>

// Test material written from the formats' own rules, independent of the code under
// test: Mach-O files, kext folders, and raw archive surgery.
namespace MkextTestKexts {

constexpr uint32_t I386 = 7;
constexpr uint32_t X86_64 = 0x01000007;
constexpr uint32_t PPC = 18;

// A thin Mach-O header for `cputype` (little-endian for Intel, big for ppc) followed by
// `payload`.
QByteArray thinMachO(uint32_t cputype, const QByteArray &payload);
// A universal file of the thin files, each at a 4096-byte boundary.
QByteArray fatMachO(const QList<QPair<uint32_t, QByteArray>> &slices);
QByteArray randomBytes(qsizetype size, quint32 seed);

// Writes <folder>/<name>.kext with an XML Info.plist holding `extraXml` (key/value
// pairs) besides the identifier, version and, when `executable` is not null, the
// executable name and file. Returns the bundle path.
QString writeKext(const QString &folder, const QString &name, const QString &identifier,
                  const QString &version, const QByteArray &executable,
                  const QString &extraXml = QString());

// Big-endian word access and a fresh length and checksum for the archive at `base`.
uint32_t word(const QByteArray &bytes, qsizetype at);
void setWord(QByteArray &bytes, qsizetype at, uint32_t value);
void reseal(QByteArray &bytes, qsizetype base = 0);

// A tree, or the Info.plist of a bundle, as libplist's XML (key order kept), for
// comparisons.
QByteArray xmlOf(plist_t node);
QByteArray infoXml(const QString &plistPath);
// Every file below `folder`, relative, sorted.
QStringList tree(const QString &folder);
QByteArray readFile(const QString &path);
bool writeFile(const QString &path, const QByteArray &bytes);

} // namespace MkextTestKexts

#include "sandbox/LoadedKextState.h"

#include "plist/RegularFile.h"
#include "sandbox/SandboxCatalog.h"

#include <QFile>
#include <QSaveFile>
#include <algorithm>
#include <cstdio>

namespace {

constexpr quint64 firstAddress = 0xffffff7f80700000ULL;
constexpr quint64 page = 0x1000;

// Sizes that look like real kexts' but stay the same from one sandbox to the next.
quint32 sizeFor(const QString &identifier) {
    quint32 sum = 0;
    for (QChar c : identifier)
        sum = sum * 31 + c.unicode();
    return quint32((3 + sum % 90) * page);
}

quint64 nextAddress(const QList<LoadedKext> &kexts) {
    quint64 next = firstAddress;
    for (const LoadedKext &k : kexts) {
        if (k.address != 0)
            next = std::max(next, (k.address + k.size + page - 1) / page * page);
    }
    return next;
}

} // namespace

LoadedKextState::LoadedKextState(const QString &root) : m_root(root) {}

QString LoadedKextState::filePath() const {
    return m_root + QStringLiteral("/var/db/loaded-kexts.tsv");
}

QList<LoadedKext> LoadedKextState::read() const {
    QList<LoadedKext> kexts;
    const RegularFile::Read read = RegularFile::read(filePath(), 64 << 20);
    if (!read.bytes)
        return kexts;
    const QStringList lines = QString::fromUtf8(*read.bytes).split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        const QStringList f = line.split(QLatin1Char('\t'));
        if (f.size() != 7)
            continue;
        LoadedKext k;
        k.index = f[0].toInt();
        k.refs = f[1].toInt();
        k.address = f[2].toULongLong(nullptr, 16);
        k.size = f[3].toUInt(nullptr, 16);
        k.identifier = f[4];
        k.version = f[5];
        for (const QString &link : f[6].split(QLatin1Char(' '), Qt::SkipEmptyParts))
            k.links << link.toInt();
        kexts << k;
    }
    return kexts;
}

bool LoadedKextState::write(const QList<LoadedKext> &kexts) const {
    QString text;
    for (const LoadedKext &k : kexts) {
        QStringList links;
        for (int link : k.links)
            links << QString::number(link);
        text += QStringLiteral("%1\t%2\t%3\t%4\t%5\t%6\t%7\n")
                    .arg(k.index)
                    .arg(k.refs)
                    .arg(k.address, 0, 16)
                    .arg(k.size, 0, 16)
                    .arg(k.identifier, k.version, links.join(QLatin1Char(' ')));
    }
    QSaveFile file(filePath());
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(text.toUtf8());
    return file.commit();
}

QList<LoadedKext> LoadedKextState::initial() {
    QList<LoadedKext> kexts;
    for (const SandboxKext &k : SandboxCatalog::kexts()) {
        if (!k.loaded)
            continue;
        QStringList libraries;
        for (const auto &library : k.libraries)
            libraries << library.first;
        load(kexts, k.identifier, k.version, libraries);
        // The kernel's own interfaces are part of the kernel image: no address, no size.
        if (k.binary == SandboxKext::Binary::None) {
            kexts.last().address = 0;
            kexts.last().size = 0;
        }
    }
    return kexts;
}

void LoadedKextState::load(QList<LoadedKext> &kexts, const QString &identifier,
                           const QString &version, const QStringList &libraries) {
    LoadedKext k;
    k.index = kexts.isEmpty() ? 1 : kexts.last().index + 1;
    k.address = nextAddress(kexts);
    k.size = sizeFor(identifier);
    k.identifier = identifier;
    k.version = version;
    for (LoadedKext &other : kexts) {
        if (libraries.contains(other.identifier)) {
            ++other.refs;
            k.links << other.index;
        }
    }
    std::sort(k.links.begin(), k.links.end(), std::greater<int>());
    kexts << k;
}

void LoadedKextState::unload(QList<LoadedKext> &kexts, const QString &identifier) {
    const auto it = std::find_if(kexts.begin(), kexts.end(),
                                 [&](const LoadedKext &k) { return k.identifier == identifier; });
    if (it == kexts.end())
        return;
    const QList<int> links = it->links;
    kexts.erase(it);
    for (LoadedKext &other : kexts) {
        if (links.contains(other.index) && other.refs > 0)
            --other.refs;
    }
}

const LoadedKext *LoadedKextState::find(const QList<LoadedKext> &kexts, const QString &identifier) {
    for (const LoadedKext &k : kexts) {
        if (k.identifier == identifier)
            return &k;
    }
    return nullptr;
}

QString LoadedKextState::kextstatText(const QList<LoadedKext> &kexts) {
    QString text = QStringLiteral("Index Refs Address            Size       Wired      "
                                  "Name (Version) <Linked Against>\n");
    for (const LoadedKext &k : kexts) {
        // The C library's "%#x" prints a zero as "0", as the tool does; Qt's own
        // formatting would print "0x0".
        char numbers[80];
        std::snprintf(numbers, sizeof numbers, "%5d %4d %#-18llx %#-10x %#-10x ", k.index, k.refs,
                      static_cast<unsigned long long>(k.address), k.size, k.size);
        text += QLatin1String(numbers);
        text += k.identifier + QStringLiteral(" (") + k.version + QLatin1Char(')');
        if (!k.links.isEmpty()) {
            QStringList links;
            for (int link : k.links)
                links << QString::number(link);
            text += QStringLiteral(" <") + links.join(QLatin1Char(' ')) + QLatin1Char('>');
        }
        text += QLatin1Char('\n');
    }
    return text;
}

#include "mkext/BundleNamer.h"

#include <QFileInfo>

BundleNamer::BundleNamer(const QString &folder, Taken taken)
    : m_folder(folder), m_taken(taken ? std::move(taken) : Taken(&BundleNamer::takenOnDisk)) {}

bool BundleNamer::takenOnDisk(const QString &path) {
    // A dangling link counts as taken: writing through it could land anywhere.
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

QString BundleNamer::next(const QString &name) {
    int &number = m_nextNumber[name];
    for (;; ++number) {
        const QString candidate = number == 0 ? name + QStringLiteral(".kext")
                                              : QStringLiteral("%1-%2.kext").arg(name).arg(number);
        if (!m_taken(m_folder + QLatin1Char('/') + candidate)) {
            ++number;
            return candidate;
        }
    }
}

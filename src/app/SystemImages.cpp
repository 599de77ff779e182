#include "SystemImages.h"

#include <QFileInfo>
#include <QImageReader>
#include <QPixmap>

namespace {
QIcon read(const QString &path) {
    QImageReader reader(path);
    const QImage image = reader.read();
    if (image.isNull())
        return {};
    return QIcon(QPixmap::fromImage(image));
}
} // namespace

SystemImages::SystemImages(SystemPaths paths, QString shippedFolder)
    : m_paths(std::move(paths)), m_shipped(std::move(shippedFolder)) {}

QIcon SystemImages::icon(const QString &systemFile) const {
    const QIcon system = read(m_paths.system(systemFile));
    if (!system.isNull())
        return system;
    // Our copies are PNG files named after the system's: DFA.icns -> DFA.png.
    return read(m_shipped + QLatin1Char('/') + QFileInfo(systemFile).completeBaseName() +
                QStringLiteral(".png"));
}

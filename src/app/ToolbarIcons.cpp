#include "ToolbarIcons.h"

#include "MainWindow.h"
#include "volumes/SystemPaths.h"

#include <QAction>
#include <QImageReader>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace {
constexpr int side = 64;

void drawDisk(QPainter &p) {
    // A hard disk with a stethoscope-like check mark: maintenance.
    p.setBrush(QColor(0x9a, 0xa4, 0xb0));
    p.setPen(QPen(QColor(0x4a, 0x52, 0x5c), 2));
    p.drawRoundedRect(QRectF(6, 18, 52, 30), 6, 6);
    p.setBrush(QColor(0x3c, 0xb0, 0x4c));
    p.drawEllipse(QPointF(46, 33), 4, 4);
    p.setPen(QPen(QColor(0xd0, 0x3a, 0x2e), 5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.drawPolyline(QPolygonF({QPointF(14, 34), QPointF(22, 42), QPointF(36, 24)}));
}

void drawBox(QPainter &p) {
    // An open box with an arrow going in: installation.
    p.setPen(QPen(QColor(0x7a, 0x55, 0x2a), 2));
    p.setBrush(QColor(0xd9, 0xa8, 0x62));
    p.drawRect(QRectF(10, 30, 44, 28));
    p.setBrush(QColor(0x2f, 0x7d, 0xd8));
    p.setPen(Qt::NoPen);
    p.drawPolygon(QPolygonF({QPointF(26, 4), QPointF(38, 4), QPointF(38, 22), QPointF(46, 22),
                             QPointF(32, 38), QPointF(18, 22), QPointF(26, 22)}));
}

void drawPuzzle(QPainter &p, const QColor &fill) {
    // A puzzle piece stands for a kext.
    QPainterPath piece;
    piece.addRoundedRect(QRectF(12, 20, 40, 36), 4, 4);
    piece.addEllipse(QPointF(32, 18), 8, 8);
    piece.addEllipse(QPointF(54, 38), 8, 8);
    p.setPen(QPen(fill.darker(160), 2));
    p.setBrush(fill);
    p.drawPath(piece.simplified());
}

void drawUnpack(QPainter &p) {
    drawPuzzle(p, QColor(0xe8, 0xc5, 0x4a));
    p.setPen(QPen(QColor(0x2f, 0x7d, 0xd8), 5, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(8, 58), QPointF(24, 42));
    p.drawLine(QPointF(8, 58), QPointF(8, 46));
    p.drawLine(QPointF(8, 58), QPointF(20, 58));
}

void drawCheck(QPainter &p) {
    drawPuzzle(p, QColor(0x8c, 0xb8, 0xe8));
    // A magnifier over the piece.
    p.setBrush(QColor(255, 255, 255, 150));
    p.setPen(QPen(QColor(0x33, 0x33, 0x33), 4));
    p.drawEllipse(QPointF(26, 36), 12, 12);
    p.setPen(QPen(QColor(0x33, 0x33, 0x33), 6, Qt::SolidLine, Qt::RoundCap));
    p.drawLine(QPointF(35, 45), QPointF(46, 56));
}

void drawLoaded(QPainter &p) {
    // A chip with rows: what the kernel holds.
    p.setPen(QPen(QColor(0x2e, 0x3a, 0x46), 2));
    p.setBrush(QColor(0x4c, 0x5c, 0x6c));
    p.drawRoundedRect(QRectF(14, 14, 36, 36), 4, 4);
    for (int i = 0; i < 4; ++i) {
        const qreal at = 20 + i * 8;
        p.drawLine(QPointF(at, 6), QPointF(at, 14));
        p.drawLine(QPointF(at, 50), QPointF(at, 58));
        p.drawLine(QPointF(6, at), QPointF(14, at));
        p.drawLine(QPointF(50, at), QPointF(58, at));
    }
    p.setPen(QPen(QColor(0x8c, 0xe0, 0x8c), 3));
    for (int i = 0; i < 3; ++i)
        p.drawLine(QPointF(20, 24 + i * 8), QPointF(44, 24 + i * 8));
}
} // namespace

QIcon ToolbarIcons::shipped(const QString &identifier) {
    QPixmap pixmap(side, side);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    if (identifier == QLatin1String("ti_m"))
        drawDisk(painter);
    else if (identifier == QLatin1String("ti_i"))
        drawBox(painter);
    else if (identifier == QLatin1String("ti_u"))
        drawUnpack(painter);
    else if (identifier == QLatin1String("ti_c"))
        drawCheck(painter);
    else if (identifier == QLatin1String("ti_l"))
        drawLoaded(painter);
    painter.end();
    return QIcon(pixmap);
}

QIcon ToolbarIcons::fromFile(const QString &path) {
    QImageReader reader(path);
    const QImage image = reader.read();
    if (image.isNull())
        return {};
    return QIcon(QPixmap::fromImage(image));
}

void ToolbarIcons::applyShipped(MainWindow &window) {
    for (int page = PageMaintenance; page <= PageLoaded; ++page) {
        const QString id = MainWindow::toolbarIdentifier(page);
        window.action(id)->setIcon(shipped(id));
    }
}

void ToolbarIcons::applySystem(MainWindow &window, const SystemPaths &paths) {
    const struct {
        const char *id;
        const char *file;
    } systemIcons[] = {
        {"ti_i", "/System/Library/CoreServices/Installer.app/Contents/Resources/Installer.icns"},
        {"ti_m", "/Applications/Utilities/Disk Utility.app/Contents/Resources/DFA.icns"},
        {"ti_u", "/System/Library/CoreServices/CoreTypes.bundle/Contents/Resources/KEXT.icns"},
    };
    for (const auto &entry : systemIcons) {
        const QIcon icon = fromFile(paths.system(QLatin1String(entry.file)));
        if (!icon.isNull())
            window.action(QLatin1String(entry.id))->setIcon(icon);
    }
}

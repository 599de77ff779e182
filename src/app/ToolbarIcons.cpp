#include "ToolbarIcons.h"

#include "MainWindow.h"
#include "SystemImages.h"

#include <QAction>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace {
constexpr int side = 64;

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
    if (identifier == QLatin1String("ti_c"))
        drawCheck(painter);
    else if (identifier == QLatin1String("ti_l"))
        drawLoaded(painter);
    painter.end();
    return QIcon(pixmap);
}

void ToolbarIcons::applyShipped(MainWindow &window) {
    for (const QString &id : {QStringLiteral("ti_c"), QStringLiteral("ti_l")})
        window.action(id)->setIcon(shipped(id));
}

void ToolbarIcons::applySystem(MainWindow &window, const SystemImages &images) {
    const struct {
        const char *id;
        const char *file;
    } systemIcons[] = {
        {"ti_i", "/System/Library/CoreServices/Installer.app/Contents/Resources/Installer.icns"},
        {"ti_m", "/Applications/Utilities/Disk Utility.app/Contents/Resources/DFA.icns"},
        {"ti_u", "/System/Library/CoreServices/CoreTypes.bundle/Contents/Resources/KEXT.icns"},
    };
    // An image that can't be read leaves its item without one.
    for (const auto &entry : systemIcons)
        window.action(QLatin1String(entry.id))->setIcon(images.icon(QLatin1String(entry.file)));
}

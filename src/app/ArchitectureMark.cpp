#include "ArchitectureMark.h"

#include <QEvent>
#include <QPainter>
#include <QStyleOption>

ArchitectureMark::ArchitectureMark(QWidget *parent) : QCheckBox(parent) {
    setFocusPolicy(Qt::NoFocus);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    connect(this, &QCheckBox::toggled, this, [this] {
        describe();
        update();
    });
}

QString ArchitectureMark::glyph() const {
    return isChecked() ? QStringLiteral("\u2713") : QStringLiteral("\u2013");
}

QSize ArchitectureMark::sizeHint() const {
    const QFontMetrics metrics = fontMetrics();
    const int width = metrics.horizontalAdvance(QStringLiteral("\u2713 ")) +
                      metrics.horizontalAdvance(text()) + 4;
    return {width, metrics.height() + 4};
}

void ArchitectureMark::paintEvent(QPaintEvent *) {
    QPainter painter(this);
    QStyleOption option;
    option.initFrom(this);
    // Missing code is told by the dash and a dimmer name.
    const QPalette::ColorRole role = isChecked() ? QPalette::WindowText : QPalette::PlaceholderText;
    painter.setPen(palette().color(role));
    const QString shown = glyph() + QLatin1Char(' ') + text();
    painter.drawText(option.rect.adjusted(2, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter, shown);
}

bool ArchitectureMark::event(QEvent *event) {
    // The form gives the name after construction: described when first shown.
    if (event->type() == QEvent::Polish || event->type() == QEvent::LanguageChange)
        describe();
    return QCheckBox::event(event);
}

void ArchitectureMark::describe() {
    // A screen reader hears the state and that it can't be changed.
    setAccessibleDescription(isChecked() ? tr("Has code for %1 (read-only)").arg(text())
                                         : tr("No code for %1 (read-only)").arg(text()));
    setToolTip(accessibleDescription());
}

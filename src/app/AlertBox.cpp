#include "AlertBox.h"

#include <QFontMetrics>
#include <QLabel>
#include <QMessageBox>

int AlertBox::minimumTextWidth(const QWidget &box) {
    // About 45 characters of the box's font: a five-word sentence stays on one line.
    return qMax(320, box.fontMetrics().horizontalAdvance(QLatin1Char('x')) * 45);
}

void AlertBox::widen(QMessageBox &box) {
    // The headline label exists from the start and keeps its minimum width when the box
    // lays itself out again; the informative text below shares its column.
    if (auto *label = box.findChild<QLabel *>(QStringLiteral("qt_msgbox_label")))
        label->setMinimumWidth(minimumTextWidth(box));
}

QMessageBox *AlertBox::warn(QWidget *parent, const QString &text) {
    auto *box = new QMessageBox(QMessageBox::Warning, QString(), text, QMessageBox::Ok, parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
    widen(*box);
    box->open();
    return box;
}

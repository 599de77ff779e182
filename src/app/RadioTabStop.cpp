#include "RadioTabStop.h"

#include <QAbstractButton>
#include <QKeyEvent>

RadioTabStop::RadioTabStop(const QList<QAbstractButton *> &buttons, QObject *parent)
    : QObject(parent), m_buttons(buttons) {
    for (QAbstractButton *button : m_buttons) {
        button->installEventFilter(this);
        connect(button, &QAbstractButton::toggled, this, &RadioTabStop::update);
    }
    update();
}

void RadioTabStop::update() {
    QAbstractButton *stop = nullptr;
    for (QAbstractButton *button : m_buttons) {
        if (button->hasFocus())
            return makeStop(button);
        if (!stop && button->isChecked() && button->isEnabled())
            stop = button;
    }
    for (QAbstractButton *button : m_buttons) {
        if (!stop && button->isEnabled())
            stop = button;
    }
    makeStop(stop);
}

void RadioTabStop::makeStop(QAbstractButton *stop) {
    // The others keep taking focus from a click, just not from Tab.
    for (QAbstractButton *button : m_buttons)
        button->setFocusPolicy(button == stop ? Qt::StrongFocus : Qt::ClickFocus);
}

bool RadioTabStop::eventFilter(QObject *watched, QEvent *event) {
    auto *button = qobject_cast<QAbstractButton *>(watched);
    if (event->type() == QEvent::FocusIn) {
        makeStop(button);
    } else if (event->type() == QEvent::EnabledChange) {
        update();
    } else if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Down || key == Qt::Key_Right || key == Qt::Key_Up ||
            key == Qt::Key_Left) {
            moveFocus(button, key == Qt::Key_Down || key == Qt::Key_Right ? 1 : -1);
            return true;
        }
    }
    return QObject::eventFilter(watched, event);
}

void RadioTabStop::moveFocus(QAbstractButton *from, int step) {
    const qsizetype count = m_buttons.size();
    qsizetype index = m_buttons.indexOf(from);
    for (qsizetype tried = 1; tried < count; ++tried) {
        index = (index + step + count) % count;
        if (m_buttons[index]->isEnabled()) {
            m_buttons[index]->setFocus(Qt::TabFocusReason);
            return;
        }
    }
}

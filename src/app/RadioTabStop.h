#pragma once

#include <QList>
#include <QObject>

class QAbstractButton;

// Radio buttons whose exclusivity a page keeps itself are, to Qt, separate buttons: each
// would be a Tab stop of its own. This makes the group one stop, as a radio group is
// everywhere else: Tab reaches the chosen button (or the first one that can be used) and
// the arrow keys move among the buttons; Space chooses.
class RadioTabStop : public QObject {
    Q_OBJECT
public:
    RadioTabStop(const QList<QAbstractButton *> &buttons, QObject *parent);

    // Puts the stop on the chosen button again (after the choice changed by code).
    void update();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void makeStop(QAbstractButton *stop);
    void moveFocus(QAbstractButton *from, int step);

    QList<QAbstractButton *> m_buttons;
};

#pragma once

#include <QFrame>

class QLabel;
class QPushButton;

// A line at the top of a page that says why the page has nothing to show, with a button
// that offers a way out when there is one. Hidden while the page has something to show.
class EmptyState : public QFrame {
    Q_OBJECT
public:
    explicit EmptyState(QWidget *parent = nullptr);

    // An empty reason hides it; an empty offer hides the button.
    void show(const QString &reason, const QString &offer = {});
    QString reason() const;

signals:
    void offerClicked();

private:
    QLabel *m_reason;
    QPushButton *m_offer;
};

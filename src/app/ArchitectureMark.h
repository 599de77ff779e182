#pragma once

#include <QCheckBox>

// Whether a kext has code for one architecture. The program sets it and the user only
// reads it, so it is drawn as a mark beside the name (a tick, or a dash when the code is
// missing) rather than as a box that invites a click; it takes neither clicks nor focus.
// It stays a check box underneath, so its state reads the same way everywhere.
class ArchitectureMark : public QCheckBox {
    Q_OBJECT
public:
    explicit ArchitectureMark(QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    bool hitButton(const QPoint &) const override { return false; }
    void paintEvent(QPaintEvent *event) override;
    bool event(QEvent *event) override;

private:
    void describe();
    QString glyph() const;
};

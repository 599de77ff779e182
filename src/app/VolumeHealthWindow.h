#pragma once

#include "doctor/DoctorFinding.h"

#include <QList>
#include <QString>
#include <QWidget>
#include <memory>

namespace Ui {
class VolumeHealthWindow;
}

// The Volume Health window: the doctor's findings on one volume, grouped by kext (the
// archives last), each with buttons for the tasks that fix it. It shows and asks; the
// controller decides what runs.
class VolumeHealthWindow : public QWidget {
    Q_OBJECT
public:
    // What a fix button starts.
    enum class Action { Maintain, Remove, Restore, Install };
    struct Button {
        Action action;
        QString label;
    };

    explicit VolumeHealthWindow(QWidget *parent = nullptr);
    ~VolumeHealthWindow() override;

    // The doctor is reading the volume.
    void showChecking(const QString &volume);
    // `buttons` holds each finding's buttons, in the findings' order; paths are shown from
    // the volume's root.
    void showFindings(const QString &summary, const QString &volumeRoot,
                      const DoctorFindings &findings, const QList<QList<Button>> &buttons);
    // While a fix runs, no other may start.
    void setFixing(bool fixing);

    static QString actionName(Action action); // "maintain", "remove", ... (button names)

signals:
    void actionRequested(int finding, VolumeHealthWindow::Action action);
    void checkAgain();

private:
    QWidget *fixCell(int finding, const DoctorFinding &what, const QList<Button> &buttons);

    std::unique_ptr<Ui::VolumeHealthWindow> m_ui;
    QList<QWidget *> m_buttons;
};

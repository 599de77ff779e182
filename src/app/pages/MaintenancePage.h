#pragma once

#include "maintenance/MaintenanceOptions.h"

#include <QStringList>
#include <QWidget>
#include <memory>

class EmptyState;
class OptionGroup;
namespace Ui {
class MaintenancePage;
}

// The maintenance page: the volume, the Extra and S/L/E option groups (a parent box over
// two task boxes each, wired here), the spinner, the status line and the start button.
class MaintenancePage : public QWidget {
    Q_OBJECT
public:
    explicit MaintenancePage(QWidget *parent = nullptr);
    ~MaintenancePage() override;

    // The volume and the four task boxes as the user left them; the version folder and
    // the settings are the caller's to add.
    MaintenanceOptions options() const;
    QString volume() const;
    // Ticks exactly the task boxes the options tick (another task's fix is not this one's),
    // the group boxes following, as if the user had clicked them.
    void setTasks(const MaintenanceOptions &tasks);

    // The volumes to choose from, `selected` chosen (-1: the first).
    void setVolumes(const QStringList &titles, int selected);
    // Chooses the volume of that title, leaving the popup as enabled as it was.
    void selectVolume(const QString &title);
    // What the volume holds: a missing folder clears its group's boxes and switches them
    // off; a present one switches them on without ticking anything.
    void setSleAvailable(bool present);
    void setExtraAvailable(bool present);

    // While the job runs every control is off, switched in the order the job knows.
    void setBusy(bool busy);
    void setSpinning(bool spinning);
    void setStatus(const QString &text);

    // Why the page has nothing to show ("" when it has), and what it offers instead.
    void showEmptyState(const QString &reason, const QString &offer = {});
    QString emptyReason() const;

signals:
    void offerClicked();
    void startClicked();
    // The user picked a volume in the popup.
    void volumeChosen();

private slots:
    void cbExtraC();
    void cbSLEC();
    void cbMixExtra();
    void cbMixSLE();

private:
    std::unique_ptr<Ui::MaintenancePage> m_ui;
    EmptyState *m_empty;
    std::unique_ptr<OptionGroup> m_extraGroup;
    std::unique_ptr<OptionGroup> m_sleGroup;
};

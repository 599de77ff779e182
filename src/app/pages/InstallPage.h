#pragma once

#include "install/InstallOptions.h"

#include <QList>
#include <QStringList>
#include <QWidget>
#include <memory>

class QAbstractItemModel;
class QRadioButton;
namespace Ui {
class InstallPage;
}

// The installation page: the install list's table with its two buttons, the volume, the
// three destinations (kept exclusive here, with "none chosen" possible), the backup box,
// the progress bar and the install button.
class InstallPage : public QWidget {
    Q_OBJECT
public:
    explicit InstallPage(QWidget *parent = nullptr);
    ~InstallPage() override;

    // The install list the table shows; it takes the files dropped on it.
    void setList(QAbstractItemModel *list);
    QList<int> selectedRows() const;
    void clearSelection();

    // The volume, the destination and the backup box as the user left them; the bundles,
    // the version folder and the settings are the caller's to add.
    InstallOptions options() const;
    QString volume() const;

    // The volumes to choose from, `selected` chosen (-1: the first).
    void setVolumes(const QStringList &titles, int selected);
    // Chooses the volume's S/L/E, or its Extra folder, as the destination.
    void chooseDestination(bool sle);
    void selectVolume(const QString &title);
    void setVolumeChoiceEnabled(bool enabled);
    // What the volume holds: the destination that is there is chosen; a missing one is
    // switched off and cleared, and the desktop is never left chosen.
    void setSleAvailable(bool present);
    void setExtraAvailable(bool present);

    // While the job runs the page's controls are off, switched in the order the job knows.
    void setBusy(bool busy);
    // The bar's range is 0..maximum; progress is shown in bundles started.
    void setProgressMaximum(int maximum);
    // Before a run: full when the last bundle starts; a maximum of 0 shows it busy.
    void prepareProgress(int maximum);
    void showBundleStarted(int index);
    // Only activity is shown while the folder-wide commands run.
    void setProgressIndeterminate(bool indeterminate);
    // The bar emptied at the end of a run.
    void resetProgress();

signals:
    void browseClicked();
    void clearClicked();
    void installClicked();
    // The user picked a volume in the popup.
    void volumeChosen();

private slots:
    void EEnableDiskSel();
    void SLEEnableDiskSel();
    void MkextDisableDiskSel();

private:
    void choose(QRadioButton *destination);

    std::unique_ptr<Ui::InstallPage> m_ui;
    int m_maximum = 0;
};

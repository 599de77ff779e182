#pragma once

#include "inspect/ArchitectureProbe.h"

#include <QWidget>
#include <memory>

namespace Ui {
class CheckPage;
}

// The checking page: the chosen kext, the four processor boxes (they only report), the
// library listing and the test load.
class CheckPage : public QWidget {
    Q_OBJECT
public:
    explicit CheckPage(QWidget *parent = nullptr);
    ~CheckPage() override;

    QString kext() const;
    // The "check dependencies too" box is ticked.
    bool dependenciesWanted() const;

    // A new kext: its path and processors, and an empty listing.
    void showKext(const QString &kext, const ArchitectureProbe::Architectures &found);
    void setSpinning(bool spinning);
    // While the listing runs the two buttons that would start another are off.
    void setListing(bool running);
    void setDependencies(const QString &listing);

signals:
    void chooseClicked();
    void dependenciesClicked();
    void loadClicked();

private:
    std::unique_ptr<Ui::CheckPage> m_ui;
};

#pragma once

#include <QWidget>
#include <memory>

namespace Ui {
class MaintenancePage;
}

// The maintenance page: volume, the Extra and S/L/E option groups, start button.
// The form's object names are the outlet names the handlers look for; the page only
// lays them out, the delegates and controllers give them behaviour.
class MaintenancePage : public QWidget {
    Q_OBJECT
public:
    explicit MaintenancePage(QWidget *parent = nullptr);
    ~MaintenancePage() override;

    Ui::MaintenancePage *ui() const { return m_ui.get(); }

private:
    std::unique_ptr<Ui::MaintenancePage> m_ui;
};

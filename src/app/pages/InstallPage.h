#pragma once

#include <QWidget>
#include <memory>

namespace Ui {
class InstallPage;
}

// The installation page: the install list, destination and progress.
// The form's object names are the outlet names the handlers look for; the page only
// lays them out, the delegates and controllers give them behaviour.
class InstallPage : public QWidget {
    Q_OBJECT
public:
    explicit InstallPage(QWidget *parent = nullptr);
    ~InstallPage() override;

    Ui::InstallPage *ui() const { return m_ui.get(); }

private:
    std::unique_ptr<Ui::InstallPage> m_ui;
};

#pragma once

#include <QWidget>
#include <memory>

namespace Ui {
class CheckPage;
}

// The checking page: a kext's architectures, its dependencies and the test load.
// The form's object names are the outlet names the handlers look for; the page only
// lays them out, the delegates and controllers give them behaviour.
class CheckPage : public QWidget {
    Q_OBJECT
public:
    explicit CheckPage(QWidget *parent = nullptr);
    ~CheckPage() override;

    Ui::CheckPage *ui() const { return m_ui.get(); }

private:
    std::unique_ptr<Ui::CheckPage> m_ui;
};

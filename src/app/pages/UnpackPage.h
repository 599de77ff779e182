#pragma once

#include <QWidget>
#include <memory>

namespace Ui {
class UnpackPage;
}

// The unpacking page: the chosen mkext, its listing and where to unpack it.
// The form's object names are the outlet names the handlers look for; the page only
// lays them out, the delegates and controllers give them behaviour.
class UnpackPage : public QWidget {
    Q_OBJECT
public:
    explicit UnpackPage(QWidget *parent = nullptr);
    ~UnpackPage() override;

    Ui::UnpackPage *ui() const { return m_ui.get(); }

private:
    std::unique_ptr<Ui::UnpackPage> m_ui;
};

#pragma once

#include <QWidget>
#include <memory>

namespace Ui {
class LoadedPage;
}

// The loaded kexts page: filtered list, detail pane and the unload/reload buttons.
// The form's object names are the outlet names the handlers look for; the page only
// lays them out, the delegates and controllers give them behaviour.
class LoadedPage : public QWidget {
    Q_OBJECT
public:
    explicit LoadedPage(QWidget *parent = nullptr);
    ~LoadedPage() override;

    Ui::LoadedPage *ui() const { return m_ui.get(); }

private:
    std::unique_ptr<Ui::LoadedPage> m_ui;
};

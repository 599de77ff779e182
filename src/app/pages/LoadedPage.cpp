#include "LoadedPage.h"

#include "ui_LoadedPage.h"

LoadedPage::LoadedPage(QWidget *parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::LoadedPage>()) {
    m_ui->setupUi(this);
    // Extra height goes to the list; the detail pane keeps the height of its rows.
    m_ui->split->setStretchFactor(0, 1);
    m_ui->split->setStretchFactor(1, 0);
    m_ui->SVBottom->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
}

LoadedPage::~LoadedPage() = default;

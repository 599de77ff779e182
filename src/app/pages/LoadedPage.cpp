#include "LoadedPage.h"

#include "ui_LoadedPage.h"

LoadedPage::LoadedPage(QWidget *parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::LoadedPage>()) {
    m_ui->setupUi(this);
}

LoadedPage::~LoadedPage() = default;

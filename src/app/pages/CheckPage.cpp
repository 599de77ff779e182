#include "CheckPage.h"

#include "ui_CheckPage.h"

CheckPage::CheckPage(QWidget *parent) : QWidget(parent), m_ui(std::make_unique<Ui::CheckPage>()) {
    m_ui->setupUi(this);
}

CheckPage::~CheckPage() = default;

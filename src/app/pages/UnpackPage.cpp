#include "UnpackPage.h"

#include "ui_UnpackPage.h"

UnpackPage::UnpackPage(QWidget *parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::UnpackPage>()) {
    m_ui->setupUi(this);
}

UnpackPage::~UnpackPage() = default;

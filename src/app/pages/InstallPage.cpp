#include "InstallPage.h"

#include "ui_InstallPage.h"

InstallPage::InstallPage(QWidget *parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::InstallPage>()) {
    m_ui->setupUi(this);
}

InstallPage::~InstallPage() = default;

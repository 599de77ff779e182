#include "MaintenancePage.h"

#include "ui_MaintenancePage.h"

MaintenancePage::MaintenancePage(QWidget *parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::MaintenancePage>()) {
    m_ui->setupUi(this);
}

MaintenancePage::~MaintenancePage() = default;

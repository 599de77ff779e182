#include "MaintenancePage.h"

#include "EmptyState.h"
#include "OptionGroup.h"
#include "ui_MaintenancePage.h"

#include <QBoxLayout>

MaintenancePage::MaintenancePage(QWidget *parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::MaintenancePage>()) {
    m_ui->setupUi(this);
    m_empty = new EmptyState(this);
    static_cast<QBoxLayout *>(layout())->insertWidget(0, m_empty);
    connect(m_empty, &EmptyState::offerClicked, this, &MaintenancePage::offerClicked);
    m_extraGroup = std::make_unique<OptionGroup>(m_ui->cbExtra, m_ui->cbERP, m_ui->cbERM);
    m_sleGroup = std::make_unique<OptionGroup>(m_ui->cbSLE, m_ui->cbSLERP, m_ui->cbSLERC);
    connect(m_ui->cbExtra, &QCheckBox::clicked, this, &MaintenancePage::cbExtraC);
    connect(m_ui->cbSLE, &QCheckBox::clicked, this, &MaintenancePage::cbSLEC);
    connect(m_ui->cbERP, &QCheckBox::clicked, this, &MaintenancePage::cbMixExtra);
    connect(m_ui->cbERM, &QCheckBox::clicked, this, &MaintenancePage::cbMixExtra);
    connect(m_ui->cbSLERP, &QCheckBox::clicked, this, &MaintenancePage::cbMixSLE);
    connect(m_ui->cbSLERC, &QCheckBox::clicked, this, &MaintenancePage::cbMixSLE);
    connect(m_ui->bMainButton, &QPushButton::clicked, this, &MaintenancePage::startClicked);
    connect(m_ui->DiskSelMain, &QComboBox::activated, this, &MaintenancePage::volumeChosen);
}

MaintenancePage::~MaintenancePage() = default;

MaintenanceOptions MaintenancePage::options() const {
    MaintenanceOptions options;
    options.volume = volume();
    options.repairExtra = m_ui->cbERP->checkState();
    options.rebuildExtraMkext = m_ui->cbERM->checkState();
    options.repairSle = m_ui->cbSLERP->checkState();
    options.rebuildCaches = m_ui->cbSLERC->checkState();
    return options;
}

void MaintenancePage::setTasks(const MaintenanceOptions &tasks) {
    m_ui->cbERP->setCheckState(tasks.repairExtra);
    m_ui->cbERM->setCheckState(tasks.rebuildExtraMkext);
    m_extraGroup->childClicked();
    m_ui->cbSLERP->setCheckState(tasks.repairSle);
    m_ui->cbSLERC->setCheckState(tasks.rebuildCaches);
    m_sleGroup->childClicked();
}

QString MaintenancePage::volume() const {
    return m_ui->DiskSelMain->currentText();
}

void MaintenancePage::setVolumes(const QStringList &titles, int selected) {
    m_ui->DiskSelMain->clear();
    m_ui->DiskSelMain->addItems(titles);
    if (selected >= 0)
        m_ui->DiskSelMain->setCurrentIndex(selected);
}

void MaintenancePage::selectVolume(const QString &title) {
    m_ui->DiskSelMain->setCurrentIndex(m_ui->DiskSelMain->findText(title));
}

void MaintenancePage::setSleAvailable(bool present) {
    if (!present) {
        m_ui->cbSLERC->setCheckState(Qt::Unchecked);
        m_ui->cbSLERP->setCheckState(Qt::Unchecked);
        m_ui->cbSLE->setCheckState(Qt::Unchecked);
    }
    m_ui->cbSLERP->setEnabled(present);
    m_ui->cbSLERC->setEnabled(present);
    m_ui->cbSLE->setEnabled(present);
}

void MaintenancePage::setExtraAvailable(bool present) {
    if (!present) {
        m_ui->cbERM->setCheckState(Qt::Unchecked);
        m_ui->cbERP->setCheckState(Qt::Unchecked);
        m_ui->cbExtra->setCheckState(Qt::Unchecked);
    }
    m_ui->cbERP->setEnabled(present);
    m_ui->cbERM->setEnabled(present);
    m_ui->cbExtra->setEnabled(present);
}

void MaintenancePage::setBusy(bool busy) {
    const QList<QWidget *> controls{m_ui->bMainButton, m_ui->cbSLE,      m_ui->cbSLERP,
                                    m_ui->cbSLERC,     m_ui->cbExtra,    m_ui->cbERP,
                                    m_ui->cbERM,       m_ui->DiskSelMain};
    for (QWidget *control : controls)
        control->setEnabled(!busy);
}

void MaintenancePage::setSpinning(bool spinning) {
    m_ui->circleMain->setVisible(spinning);
}

void MaintenancePage::setStatus(const QString &text) {
    m_ui->lbMainTask->setText(text);
}

void MaintenancePage::cbExtraC() {
    m_extraGroup->parentClicked();
}

void MaintenancePage::cbSLEC() {
    m_sleGroup->parentClicked();
}

void MaintenancePage::cbMixExtra() {
    m_extraGroup->childClicked();
    // A mkext rebuild the volume can't have is cleared; the parent keeps what the
    // children said before, so it may still show the rebuild as wanted.
    if (m_ui->cbERM->checkState() == Qt::Checked && !m_ui->cbERM->isEnabled())
        m_ui->cbERM->setCheckState(Qt::Unchecked);
}

void MaintenancePage::cbMixSLE() {
    m_sleGroup->childClicked();
}

void MaintenancePage::showEmptyState(const QString &reason, const QString &offer) {
    m_empty->show(reason, offer);
}

QString MaintenancePage::emptyReason() const {
    return m_empty->isHidden() ? QString() : m_empty->reason();
}

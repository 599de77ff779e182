#include "InstallPage.h"

#include "RadioTabStop.h"
#include "ui_InstallPage.h"

#include <QHeaderView>

InstallPage::InstallPage(QWidget *parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::InstallPage>()) {
    m_ui->setupUi(this);
    connect(m_ui->bInstBrowse, &QPushButton::clicked, this, &InstallPage::browseClicked);
    connect(m_ui->bInstClear, &QPushButton::clicked, this, &InstallPage::clearClicked);
    connect(m_ui->bInstButton, &QPushButton::clicked, this, &InstallPage::installClicked);
    connect(m_ui->DiskSelInst, &QComboBox::activated, this, &InstallPage::volumeChosen);
    connect(m_ui->inExtra, &QRadioButton::clicked, this, &InstallPage::EEnableDiskSel);
    connect(m_ui->inSLE, &QRadioButton::clicked, this, &InstallPage::SLEEnableDiskSel);
    connect(m_ui->inDesktop, &QRadioButton::clicked, this, &InstallPage::MkextDisableDiskSel);
    new RadioTabStop({m_ui->inExtra, m_ui->inSLE, m_ui->inDesktop}, this);
}

InstallPage::~InstallPage() = default;

void InstallPage::setList(QAbstractItemModel *list) {
    m_ui->tbkexts->setModel(list);
    m_ui->tbkexts->horizontalHeader()->setStretchLastSection(true);
    // Files come in from the file manager only; rows never leave by dragging.
    m_ui->tbkexts->setDragDropMode(QAbstractItemView::DropOnly);
    m_ui->tbkexts->setDefaultDropAction(Qt::CopyAction);
}

QList<int> InstallPage::selectedRows() const {
    QList<int> rows;
    for (const QModelIndex &index : m_ui->tbkexts->selectionModel()->selectedRows())
        rows << index.row();
    return rows;
}

void InstallPage::clearSelection() {
    m_ui->tbkexts->clearSelection();
}

InstallOptions InstallPage::options() const {
    InstallOptions options;
    options.volume = volume();
    options.toExtra = m_ui->inExtra->isChecked();
    options.toSle = m_ui->inSLE->isChecked();
    options.toDesktop = m_ui->inDesktop->isChecked();
    options.backup = m_ui->cbBackup->checkState() == Qt::Checked;
    return options;
}

QString InstallPage::volume() const {
    return m_ui->DiskSelInst->currentText();
}

void InstallPage::setVolumes(const QStringList &titles, int selected) {
    m_ui->DiskSelInst->clear();
    m_ui->DiskSelInst->addItems(titles);
    if (selected >= 0)
        m_ui->DiskSelInst->setCurrentIndex(selected);
}

void InstallPage::selectVolume(const QString &title) {
    m_ui->DiskSelInst->setCurrentIndex(m_ui->DiskSelInst->findText(title));
}

void InstallPage::setVolumeChoiceEnabled(bool enabled) {
    m_ui->DiskSelInst->setEnabled(enabled);
}

void InstallPage::setSleAvailable(bool present) {
    m_ui->inSLE->setEnabled(present);
    if (present) {
        m_ui->inSLE->setChecked(true);
        m_ui->inExtra->setChecked(false);
    } else {
        m_ui->inSLE->setChecked(false);
    }
    m_ui->inDesktop->setChecked(false);
}

void InstallPage::setExtraAvailable(bool present) {
    m_ui->inExtra->setEnabled(present);
    if (present) {
        m_ui->inExtra->setChecked(true);
        m_ui->inSLE->setChecked(false);
    } else {
        m_ui->inExtra->setChecked(false);
    }
    m_ui->inDesktop->setChecked(false);
}

void InstallPage::setBusy(bool busy) {
    const QList<QWidget *> controls{m_ui->bInstButton, m_ui->bInstBrowse, m_ui->bInstClear,
                                    m_ui->DiskSelInst, m_ui->cbBackup,    m_ui->inSLE,
                                    m_ui->inExtra,     m_ui->inDesktop,   m_ui->tbkexts};
    for (QWidget *control : controls)
        control->setEnabled(!busy);
}

void InstallPage::setProgressMaximum(int maximum) {
    m_ui->InstProgress->setRange(0, maximum);
}

void InstallPage::prepareProgress(int maximum) {
    m_maximum = maximum;
    m_ui->InstProgress->setRange(0, maximum);
    m_ui->InstProgress->setValue(0);
}

void InstallPage::showBundleStarted(int index) {
    m_ui->InstProgress->setValue(index);
    m_ui->InstProgress->repaint();
}

void InstallPage::setProgressIndeterminate(bool indeterminate) {
    m_ui->InstProgress->setRange(0, indeterminate ? 0 : m_maximum);
}

void InstallPage::resetProgress() {
    m_ui->InstProgress->setRange(0, 1);
    m_ui->InstProgress->setValue(0);
}

void InstallPage::EEnableDiskSel() {
    choose(m_ui->inExtra);
    m_ui->DiskSelInst->setEnabled(true);
}

void InstallPage::SLEEnableDiskSel() {
    choose(m_ui->inSLE);
    m_ui->DiskSelInst->setEnabled(true);
}

void InstallPage::MkextDisableDiskSel() {
    choose(m_ui->inDesktop);
    m_ui->DiskSelInst->setEnabled(false);
}

void InstallPage::chooseDestination(bool sle) {
    QRadioButton *destination = sle ? m_ui->inSLE : m_ui->inExtra;
    if (destination->isEnabled())
        choose(destination);
}

void InstallPage::choose(QRadioButton *destination) {
    // The three choices form one group, but the group may also have none selected (a
    // volume without S/L/E and Extra), so exclusivity is kept here.
    for (QRadioButton *choice : {m_ui->inExtra, m_ui->inSLE, m_ui->inDesktop})
        choice->setChecked(choice == destination);
}

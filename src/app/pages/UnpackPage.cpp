#include "UnpackPage.h"

#include "ui_UnpackPage.h"

UnpackPage::UnpackPage(QWidget *parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::UnpackPage>()) {
    m_ui->setupUi(this);
    connect(m_ui->bSelectMkext, &QPushButton::clicked, this, &UnpackPage::chooseMkextClicked);
    connect(m_ui->bSelectFolderToUnpack, &QPushButton::clicked, this,
            &UnpackPage::chooseFolderClicked);
    connect(m_ui->bUnpck, &QPushButton::clicked, this, &UnpackPage::unpackClicked);
}

UnpackPage::~UnpackPage() = default;

QString UnpackPage::mkext() const {
    return m_ui->MKPath->text();
}

QString UnpackPage::architecture() const {
    return m_ui->MkArch->currentText();
}

QString UnpackPage::folder() const {
    return m_ui->MKUnPath->text();
}

void UnpackPage::setArchitectures(const QStringList &architectures) {
    m_ui->MkArch->clear();
    m_ui->MkArch->addItems(architectures);
}

void UnpackPage::setFolder(const QString &folder) {
    m_ui->MKUnPath->setText(folder);
}

void UnpackPage::showMkext(const QString &mkext, const QString &listing) {
    m_ui->MKPath->setText(mkext);
    m_ui->tvMkext->setPlainText(listing);
}

void UnpackPage::setSpinning(bool spinning) {
    m_ui->circleUnpck->setVisible(spinning);
}

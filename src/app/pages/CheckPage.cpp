#include "CheckPage.h"

#include "ui_CheckPage.h"

CheckPage::CheckPage(QWidget *parent) : QWidget(parent), m_ui(std::make_unique<Ui::CheckPage>()) {
    m_ui->setupUi(this);
    m_ui->kdep->setLineWrapMode(QPlainTextEdit::NoWrap);
    // The four boxes only report; the user cannot tick them.
    for (QCheckBox *box : {m_ui->kx86_64, m_ui->ki386, m_ui->kppc, m_ui->kppc64})
        box->setAttribute(Qt::WA_TransparentForMouseEvents);
    connect(m_ui->bCheckSel, &QPushButton::clicked, this, &CheckPage::chooseClicked);
    connect(m_ui->bCheckDep, &QPushButton::clicked, this, &CheckPage::dependenciesClicked);
    connect(m_ui->bKextLoad, &QPushButton::clicked, this, &CheckPage::loadClicked);
}

CheckPage::~CheckPage() = default;

QString CheckPage::kext() const {
    return m_ui->kPath->text();
}

bool CheckPage::dependenciesWanted() const {
    return m_ui->cbcheckdep->checkState() == Qt::Checked;
}

void CheckPage::showKext(const QString &kext, const ArchitectureProbe::Architectures &found) {
    m_ui->kPath->setText(kext);
    m_ui->kx86_64->setChecked(found.x86_64);
    m_ui->ki386->setChecked(found.i386);
    m_ui->kppc->setChecked(found.ppc);
    m_ui->kppc64->setChecked(found.ppc64);
    m_ui->kdep->setPlainText(QString());
}

void CheckPage::setSpinning(bool spinning) {
    m_ui->circleChck->setVisible(spinning);
}

void CheckPage::setListing(bool running) {
    if (running)
        m_ui->circleChck->setVisible(true);
    m_ui->bCheckDep->setEnabled(!running);
    m_ui->bCheckSel->setEnabled(!running);
    if (!running)
        m_ui->circleChck->setVisible(false);
}

void CheckPage::setDependencies(const QString &listing) {
    m_ui->kdep->setPlainText(listing);
}

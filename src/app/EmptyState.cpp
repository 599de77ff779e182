#include "EmptyState.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>

EmptyState::EmptyState(QWidget *parent)
    : QFrame(parent), m_reason(new QLabel(this)), m_offer(new QPushButton(this)) {
    setObjectName(QStringLiteral("emptyState"));
    setFrameShape(QFrame::StyledPanel);
    auto *icon = new QLabel(this);
    icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxInformation).pixmap(24, 24));
    m_reason->setWordWrap(true);
    m_reason->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_offer->setObjectName(QStringLiteral("bSandbox"));
    auto *layout = new QHBoxLayout(this);
    layout->addWidget(icon);
    layout->addWidget(m_reason, 1);
    layout->addWidget(m_offer);
    connect(m_offer, &QPushButton::clicked, this, &EmptyState::offerClicked);
    QFrame::hide();
}

void EmptyState::show(const QString &reason, const QString &offer) {
    m_reason->setText(reason);
    m_offer->setText(offer);
    m_offer->setVisible(!offer.isEmpty());
    setVisible(!reason.isEmpty());
}

QString EmptyState::reason() const {
    return m_reason->text();
}

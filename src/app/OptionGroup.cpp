#include "OptionGroup.h"

#include <QCheckBox>

OptionGroup::OptionGroup(QCheckBox *parent, QCheckBox *first, QCheckBox *second)
    : m_parent(parent), m_first(first), m_second(second) {}

void OptionGroup::parentClicked() {
    // The children are two-state boxes: a parent that is somehow mixed counts as on for
    // them, as a two-state box shows a mixed value.
    const Qt::CheckState state =
        m_parent->checkState() == Qt::Unchecked ? Qt::Unchecked : Qt::Checked;
    m_first->setCheckState(state);
    m_second->setCheckState(state);
    m_parent->setTristate(false);
    // A parent cleared by the volume selector while mixed still cycles to mixed on its
    // next click; show what the children now are instead.
    m_parent->setCheckState(state);
}

void OptionGroup::childClicked() {
    const bool firstOn = m_first->checkState() == Qt::Checked;
    const bool secondOn = m_second->checkState() == Qt::Checked;
    if (firstOn && secondOn) {
        m_parent->setTristate(false);
        m_parent->setCheckState(Qt::Checked);
    } else if (!firstOn && !secondOn) {
        m_parent->setTristate(false);
        m_parent->setCheckState(Qt::Unchecked);
    } else {
        // Allowing the mixed state also makes the parent's own click cycle through it
        // (off, mixed, on), as a three-state box does.
        m_parent->setTristate(true);
        m_parent->setCheckState(Qt::PartiallyChecked);
    }
}

#include "OptionGroup.h"

#include <QCheckBox>

OptionGroup::OptionGroup(QCheckBox *parent, QCheckBox *first, QCheckBox *second)
    : m_parent(parent), m_first(first), m_second(second) {}

void OptionGroup::parentClicked() {
    Qt::CheckState state = m_parent->checkState();
    // Qt's three-state cycle goes from off to mixed; a box that no longer allows the
    // mixed state (it only still shows one) goes from off to on.
    if (state == Qt::PartiallyChecked && !m_allowsMixed) {
        state = Qt::Checked;
        m_parent->setCheckState(state);
    }
    // The children are two-state boxes: a mixed parent counts as on for them.
    const Qt::CheckState children = state == Qt::Unchecked ? Qt::Unchecked : Qt::Checked;
    m_first->setCheckState(children);
    m_second->setCheckState(children);
    // The parent keeps the state the click left, even mixed (a parent cleared by the
    // volume selector while mixed cycles to mixed); Qt draws mixed only for a
    // three-state box, so only such a parent stays one.
    m_allowsMixed = false;
    m_parent->setTristate(state == Qt::PartiallyChecked);
}

void OptionGroup::childClicked() {
    const bool firstOn = m_first->checkState() == Qt::Checked;
    const bool secondOn = m_second->checkState() == Qt::Checked;
    m_allowsMixed = firstOn != secondOn;
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

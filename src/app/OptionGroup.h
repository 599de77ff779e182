#pragma once

class QCheckBox;

// A parent check box over two children. The parent shows "mixed" only while exactly one
// child is on; clicking it hands its new state to both children.
class OptionGroup {
public:
    OptionGroup(QCheckBox *parent, QCheckBox *first, QCheckBox *second);

    // The parent was clicked: both children take its state.
    void parentClicked();
    // A child was clicked: the parent follows the children.
    void childClicked();

private:
    QCheckBox *m_parent;
    QCheckBox *m_first;
    QCheckBox *m_second;
    // Whether a click may take the parent to mixed; kept here because the box must stay
    // three-state to show a mixed state it no longer allows.
    bool m_allowsMixed = false;
};

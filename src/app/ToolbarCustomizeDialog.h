#pragma once

#include <QDialog>

class MainWindow;
class QCheckBox;
class QComboBox;

// Which page items the toolbar shows, and whether as icons, text or both. Changes apply
// at once; the dialog only closes.
class ToolbarCustomizeDialog : public QDialog {
    Q_OBJECT
public:
    explicit ToolbarCustomizeDialog(MainWindow &window);

private:
    void applyStyle(int index);
    MainWindow &m_window;
};

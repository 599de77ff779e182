#include "ToolbarCustomizeDialog.h"

#include "MainWindow.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QToolBar>
#include <QVBoxLayout>

ToolbarCustomizeDialog::ToolbarCustomizeDialog(MainWindow &window)
    : QDialog(&window), m_window(window) {
    setObjectName(QStringLiteral("TBCustDialog"));
    setWindowTitle(tr("Customize Toolbar"));
    auto *layout = new QVBoxLayout(this);

    auto *items = new QGroupBox(tr("Show these items"), this);
    auto *itemsLayout = new QVBoxLayout(items);
    for (int page = PageMaintenance; page <= PageLoaded; ++page) {
        QAction *item = window.action(MainWindow::toolbarIdentifier(page));
        auto *box = new QCheckBox(item->text(), items);
        box->setObjectName(QStringLiteral("show_") + item->objectName());
        box->setChecked(item->isVisible());
        connect(box, &QCheckBox::toggled, item, &QAction::setVisible);
        itemsLayout->addWidget(box);
    }
    layout->addWidget(items);

    auto *form = new QFormLayout;
    auto *style = new QComboBox(this);
    style->setObjectName(QStringLiteral("toolbarStyle"));
    style->addItem(tr("Icon and Text"), int(Qt::ToolButtonTextUnderIcon));
    style->addItem(tr("Icon Only"), int(Qt::ToolButtonIconOnly));
    style->addItem(tr("Text Only"), int(Qt::ToolButtonTextOnly));
    style->setCurrentIndex(style->findData(int(window.pageToolBar()->toolButtonStyle())));
    connect(style, &QComboBox::currentIndexChanged, this, &ToolbarCustomizeDialog::applyStyle);
    form->addRow(tr("Show:"), style);
    layout->addLayout(form);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::accept);
    layout->addWidget(buttons);
}

void ToolbarCustomizeDialog::applyStyle(int index) {
    auto *style = findChild<QComboBox *>(QStringLiteral("toolbarStyle"));
    m_window.pageToolBar()->setToolButtonStyle(Qt::ToolButtonStyle(style->itemData(index).toInt()));
}

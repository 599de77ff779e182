#include "VolumeHealthWindow.h"

#include "ui_VolumeHealthWindow.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QStyle>

VolumeHealthWindow::VolumeHealthWindow(QWidget *parent)
    : QWidget(parent, Qt::Window), m_ui(std::make_unique<Ui::VolumeHealthWindow>()) {
    m_ui->setupUi(this);
    m_ui->tvHealth->header()->setSectionResizeMode(0, QHeaderView::Interactive);
    m_ui->tvHealth->header()->setSectionResizeMode(1, QHeaderView::Stretch);
    m_ui->tvHealth->header()->setSectionResizeMode(2, QHeaderView::ResizeToContents);
    m_ui->tvHealth->setColumnWidth(0, 90);
    // The selected finding in full, with its fix: the rows have room for a line each.
    connect(m_ui->tvHealth, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem *item) {
        m_ui->lbHealthDetail->setText(item ? item->data(1, Qt::UserRole).toString() : QString());
    });
    connect(m_ui->bHealthRecheck, &QPushButton::clicked, this, &VolumeHealthWindow::checkAgain);
    connect(m_ui->bHealthClose, &QPushButton::clicked, this, &QWidget::close);
}

VolumeHealthWindow::~VolumeHealthWindow() = default;

QString VolumeHealthWindow::actionName(Action action) {
    switch (action) {
    case Action::Maintain:
        return QStringLiteral("maintain");
    case Action::Remove:
        return QStringLiteral("remove");
    case Action::Restore:
        return QStringLiteral("restore");
    case Action::Install:
        return QStringLiteral("install");
    }
    return {};
}

void VolumeHealthWindow::showChecking(const QString &volume) {
    setWindowTitle(tr("Volume Health: %1").arg(volume));
    m_ui->lbHealthSummary->setText(tr("Checking the kexts of %1...").arg(volume));
    m_ui->tvHealth->clear();
    m_ui->lbHealthDetail->clear();
    m_buttons.clear();
    m_ui->bHealthRecheck->setEnabled(false);
}

void VolumeHealthWindow::showFindings(const QString &summary, const QString &volumeRoot,
                                      const DoctorFindings &findings,
                                      const QList<QList<Button>> &buttons) {
    QTreeWidget *tree = m_ui->tvHealth;
    tree->clear();
    m_buttons.clear();
    m_ui->lbHealthSummary->setText(summary);
    m_ui->bHealthRecheck->setEnabled(true);
    const QIcon error = style()->standardIcon(QStyle::SP_MessageBoxCritical);
    const QIcon warning = style()->standardIcon(QStyle::SP_MessageBoxWarning);
    QTreeWidgetItem *group = nullptr;
    for (int i = 0; i < findings.size(); ++i) {
        const DoctorFinding &finding = findings.at(i);
        if (!group || group->data(0, Qt::UserRole).toString() != finding.kext) {
            group = new QTreeWidgetItem(tree);
            group->setData(0, Qt::UserRole, finding.kext);
            group->setText(0, finding.kext.startsWith(volumeRoot + QLatin1Char('/'))
                                  ? finding.kext.mid(volumeRoot.size() + 1)
                                  : finding.kext);
            group->setToolTip(0, finding.kext);
            group->setData(1, Qt::UserRole, finding.kext);
            group->setFirstColumnSpanned(true);
            group->setExpanded(true);
        }
        auto *row = new QTreeWidgetItem(group);
        const bool isError = finding.severity == DoctorFinding::Severity::Error;
        row->setIcon(0, isError ? error : warning);
        row->setText(0,
                     DoctorFinding::severityName(finding.severity) + QLatin1Char(' ') + finding.id);
        row->setText(1, finding.text);
        row->setToolTip(1, finding.text);
        row->setData(1, Qt::UserRole,
                     finding.path + QStringLiteral("\n") + row->text(0) + QStringLiteral(": ") +
                         finding.text + QStringLiteral("\nFix: ") +
                         DoctorFinding::fixText(finding.fix));
        tree->setItemWidget(row, 2, fixCell(i, finding, buttons.value(i)));
    }
    tree->resizeColumnToContents(2);
    if (QTreeWidgetItem *first = tree->topLevelItem(0))
        tree->setCurrentItem(first->child(0));
}

QWidget *VolumeHealthWindow::fixCell(int finding, const DoctorFinding &what,
                                     const QList<Button> &buttons) {
    auto *cell = new QWidget;
    auto *layout = new QHBoxLayout(cell);
    layout->setContentsMargins(2, 1, 2, 1);
    // Fixes the program can't start are said in words.
    if (buttons.isEmpty())
        layout->addWidget(new QLabel(DoctorFinding::fixText(what.fix), cell));
    for (const Button &button : buttons) {
        auto *push = new QPushButton(button.label, cell);
        push->setObjectName(what.id + QLatin1Char('-') + actionName(button.action));
        push->setToolTip(DoctorFinding::fixText(what.fix));
        connect(push, &QPushButton::clicked, this,
                [this, finding, action = button.action] { emit actionRequested(finding, action); });
        layout->addWidget(push);
        m_buttons << push;
    }
    layout->addStretch();
    return cell;
}

void VolumeHealthWindow::setFixing(bool fixing) {
    for (QWidget *button : std::as_const(m_buttons))
        button->setEnabled(!fixing);
    m_ui->bHealthRecheck->setEnabled(!fixing);
}

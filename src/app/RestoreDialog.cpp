#include "RestoreDialog.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

RestoreDialog::RestoreDialog(const QList<BackupRestore::Backup> &backups, QWidget *parent)
    : QDialog(parent), m_table(new QTableWidget(this)) {
    setObjectName(QStringLiteral("RestoreDialog"));
    setWindowTitle(tr("Restore Kexts from Backup"));
    resize(720, 360);
    // Newest first: the one to put back is most often the last installation's.
    for (auto it = backups.rbegin(); it != backups.rend(); ++it)
        m_backups << *it;

    auto *layout = new QVBoxLayout(this);
    auto *intro = new QLabel(
        m_backups.isEmpty()
            ? tr("There are no backups in Kext Backups on the desktop.")
            : tr("Choose the backup to put back. Its kexts go back to the folder they were "
                 "taken from; what they replace there is backed up first."),
        this);
    intro->setWordWrap(true);
    layout->addWidget(intro);

    m_table->setObjectName(QStringLiteral("backupTable"));
    m_table->setColumnCount(5);
    m_table->setHorizontalHeaderLabels(
        {tr("Backup"), tr("Date"), tr("Volume"), tr("Taken from"), tr("Kexts")});
    m_table->setRowCount(int(m_backups.size()));
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->verticalHeader()->hide();
    m_table->horizontalHeader()->setStretchLastSection(true);
    for (int row = 0; row < m_backups.size(); ++row) {
        const BackupRestore::Backup &backup = m_backups.at(row);
        QStringList cells{backup.name(), {}, {}, tr("(no note of where they came from)"), {}};
        if (backup.manifest) {
            QStringList names;
            for (const BackupManifest::Bundle &bundle : backup.manifest->bundles) {
                names << bundle.name;
                cells[3] = bundle.removedFrom;
            }
            cells[1] = backup.manifest->date.toString(QStringLiteral("yyyy-MM-dd HH:mm"));
            cells[2] = backup.manifest->volume;
            cells[4] = names.join(QStringLiteral(", "));
        }
        for (int column = 0; column < cells.size(); ++column) {
            auto *item = new QTableWidgetItem(cells.at(column));
            if (!backup.manifest)
                item->setFlags(Qt::NoItemFlags);
            m_table->setItem(row, column, item);
        }
    }
    m_table->resizeColumnsToContents();
    layout->addWidget(m_table);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    m_restore = buttons->addButton(tr("Restore…"), QDialogButtonBox::AcceptRole);
    m_restore->setObjectName(QStringLiteral("restoreButton"));
    m_restore->setEnabled(false);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_table, &QTableWidget::itemSelectionChanged, this,
            [this] { m_restore->setEnabled(chosen().has_value()); });
}

std::optional<BackupRestore::Backup> RestoreDialog::chosen() const {
    const int row = m_table->currentRow();
    const QList<QTableWidgetItem *> selected = m_table->selectedItems();
    if (row < 0 || selected.isEmpty() || !m_backups.at(row).manifest)
        return std::nullopt;
    return m_backups.at(row);
}

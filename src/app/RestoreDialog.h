#pragma once

#include "install/BackupRestore.h"

#include <QDialog>
#include <optional>

class QPushButton;
class QTableWidget;

// File > Restore Kexts from Backup…: the backup folders installations left on the
// desktop, newest first, with their date, volume, folder and kexts. A folder without the
// installation's note is listed but cannot be chosen.
class RestoreDialog final : public QDialog {
    Q_OBJECT
public:
    RestoreDialog(const QList<BackupRestore::Backup> &backups, QWidget *parent = nullptr);

    // The backup chosen when the dialog was accepted.
    std::optional<BackupRestore::Backup> chosen() const;

private:
    QList<BackupRestore::Backup> m_backups;
    QTableWidget *m_table;
    QPushButton *m_restore;
};

#pragma once

#include <QObject>
#include <QPointer>

class AppServices;
class InstallController;
class QMessageBox;
class TovrelAppDelegate;

// File > Restore Kexts from Backup…: the backups to choose from, a confirmation, then the
// restore as an installation on the installation page (same checks, same progress, same
// closing alert).
class RestoreController : public QObject {
    Q_OBJECT
public:
    RestoreController(TovrelAppDelegate &delegate, AppServices &services,
                      InstallController &install);

public slots:
    void MI_RestoreBackup();

private:
    TovrelAppDelegate &m_delegate;
    AppServices &m_services;
    InstallController &m_install;
};

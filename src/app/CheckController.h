#pragma once

#include <QObject>

class AppServices;
class FilePanels;
class TaskRunner;
class TovrelAppDelegate;

// The check page: a kext chosen in a panel or dropped on the window is probed for its
// processors, its libraries are listed by the task runner, and it can be test-loaded.
class CheckController : public QObject {
    Q_OBJECT
public:
    CheckController(TovrelAppDelegate &delegate, AppServices &services, TaskRunner &tasks,
                    FilePanels &panels);

public slots:
    void bCheck();
    void OpenKextToCheckPanelDidEnd(int returnCode, const QString &kext);
    // The probe sequence shared by the panel and a dropped kext.
    void checkKext(const QString &kext);
    void BCheckDepen();
    void bkextload();

private:
    // The kext's bundle identifier, or its folder name when it has none.
    static QString bundleIdentifier(const QString &kext);
    void onDrop(const QStringList &files);

    TovrelAppDelegate &m_delegate;
    AppServices &m_services;
    TaskRunner &m_tasks;
    FilePanels &m_panels;
};

#pragma once

#include "inspect/MkextUnpackTask.h"

#include <QObject>

class AppServices;
class FilePanels;
class TovrelAppDelegate;

// The unpack page: choose an mkext (or drop one) to see its listing, choose a folder,
// and unpack one architecture there. Everything runs on the UI thread and waits for the
// tool, like the page always has.
class UnpackController : public QObject {
    Q_OBJECT
public:
    UnpackController(TovrelAppDelegate &delegate, AppServices &services, FilePanels &panels);

public slots:
    void bSelectMkext();
    void OpenMkextPanelDidEnd(int returnCode, const QString &mkext);
    void bSelectFolderToUnpack();
    void OpenFolderToMkextUnpackPanelDidEnd(int returnCode, const QString &folder);
    void bUnpck();
    // Shows the listing of an mkext (chosen or dropped).
    void listMkext(const QString &mkext);

private:
    MkextUnpackTask unpacker() const;
    void onDrop(const QStringList &files);

    TovrelAppDelegate &m_delegate;
    AppServices &m_services;
    FilePanels &m_panels;
};

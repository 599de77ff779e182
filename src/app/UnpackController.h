#pragma once

#include "inspect/MkextUnpackTask.h"

#include <QObject>
#include <functional>

class TovrelAppDelegate;
namespace Ui {
class UnpackPage;
}

// The unpack page: choose an mkext (or drop one) to see its listing, choose a folder,
// and unpack one architecture there. Everything runs on the UI thread and waits for the
// tool, like the page always has.
class UnpackController : public QObject {
    Q_OBJECT
public:
    explicit UnpackController(TovrelAppDelegate &delegate);

    // Asks for a file (an mkext) or a folder and answers with the panel's return code
    // (1 = chosen) and the path. Window-modal panels unless a test answers.
    enum class PanelKind { Mkext, Folder };
    using OpenPanel =
        std::function<void(PanelKind kind, std::function<void(int, const QString &)> done)>;
    void setOpenPanel(OpenPanel panel) { m_panel = std::move(panel); }

public slots:
    void bSelectMkext();
    void OpenMkextPanelDidEnd(int returnCode, const QString &mkext);
    void bSelectFolderToUnpack();
    void OpenFolderToMkextUnpackPanelDidEnd(int returnCode, const QString &folder);
    void bUnpck();
    // Shows the listing of an mkext (chosen or dropped).
    void listMkext(const QString &mkext);

private:
    Ui::UnpackPage *ui() const;
    MkextUnpackTask unpacker() const;
    void openPanel(PanelKind kind, std::function<void(int, const QString &)> done);
    void onDrop(const QStringList &files);

    TovrelAppDelegate &m_delegate;
    OpenPanel m_panel;
};

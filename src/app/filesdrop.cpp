#include "filesdrop.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QUrl>

filesdrop::filesdrop(QWidget *parent) : QWidget(parent) {
    setAcceptDrops(true);
}

void filesdrop::dragEnterEvent(QDragEnterEvent *event) {
    // Whatever the drag carries, the window says "copy": text drops are simply ignored
    // when they land.
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void filesdrop::dragMoveEvent(QDragMoveEvent *event) {
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void filesdrop::dropEvent(QDropEvent *event) {
    event->setDropAction(Qt::CopyAction);
    event->accept();
    const QMimeData *data = event->mimeData();
    if (!data || !data->hasUrls())
        return;
    QStringList names;
    for (const QUrl &url : data->urls()) {
        if (url.isLocalFile())
            names << url.toLocalFile();
    }
    if (names.isEmpty())
        return;
    setFilenames(names);
    emit dropped(m_filenames);
}

#pragma once

#include <QStringList>
#include <QWidget>

// The window-wide drop target. It lies under every page, draws nothing and takes any
// drag, so files dropped anywhere on the window that no control claims for itself end
// up here. Only drops that carry local file names are passed on.
class filesdrop : public QWidget {
    Q_OBJECT
public:
    explicit filesdrop(QWidget *parent = nullptr);

    // The files of the last drop, in the order the drag carried them.
    QStringList filenames() const { return m_filenames; }
    void setFilenames(const QStringList &names) { m_filenames = names; }

signals:
    // Emitted once per drop of files, after filenames() has been replaced.
    void dropped(const QStringList &filenames);

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    QStringList m_filenames;
};

// Loaded into a Qt program (LD_PRELOAD) to end it as soon as its first window has painted
// its first frame: the frame is on the screen once the paint has returned, so the exit is
// queued behind it. The program's own work after that first frame never runs.

#include <QApplication>
#include <QEvent>
#include <QWidget>
#include <cstdlib>

namespace {

class FirstPaintExit : public QObject {
public:
    bool eventFilter(QObject *watched, QEvent *event) override {
        if (event->type() == QEvent::Paint && watched->isWidgetType() &&
            static_cast<QWidget *>(watched)->isWindow())
            QMetaObject::invokeMethod(
                qApp, [] { std::_Exit(0); }, Qt::QueuedConnection);
        return false;
    }
};

void installFilter() {
    qApp->installEventFilter(new FirstPaintExit);
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(installFilter)

// The smallest window worth comparing our start-up with: a main window of the same size
// holding one label.

#include <QApplication>
#include <QLabel>
#include <QMainWindow>

int main(int argc, char **argv) {
    QApplication app(argc, argv);
    QMainWindow window;
    window.setCentralWidget(new QLabel(QStringLiteral("Hello")));
    window.resize(800, 600);
    window.show();
    return app.exec();
}

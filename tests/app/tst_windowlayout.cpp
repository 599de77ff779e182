#include "WindowFixture.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QTabWidget>
#include <QTest>

// The window's layout at its start size and a larger one: every page's texts fit.
class TestWindowLayout : public QObject {
    Q_OBJECT
private slots:
    void textsFit_data();
    void textsFit();
};

void TestWindowLayout::textsFit_data() {
    QTest::addColumn<int>("page");
    QTest::addColumn<QSize>("size");
    const char *names[] = {"maintenance", "installation", "unpacking", "checking", "loaded"};
    for (int page = 0; page < 5; ++page) {
        QTest::addRow("%s at 800x600", names[page]) << page << QSize(800, 600);
        QTest::addRow("%s at 1100x800", names[page]) << page << QSize(1100, 800);
    }
}

void TestWindowLayout::textsFit() {
    QFETCH(int, page);
    QFETCH(QSize, size);

    WindowFixture f;
    f.makeVolume(QStringLiteral("Macintosh HD"), {"Extra/Extensions", "System/Library/Extensions"});
    f.delegate->applicationDidFinishLaunching();
    f.window->resize(size);
    f.window->show();
    f.window->showPage(page);
    QVERIFY(QTest::qWaitForWindowExposed(f.window.get()));
    QCOMPARE(f.window->size(), size);

    QWidget *shown = f.window->findChild<QTabWidget *>(QStringLiteral("TBV"))->currentWidget();
    for (QWidget *widget : shown->findChildren<QWidget *>()) {
        const bool hasText = qobject_cast<QLabel *>(widget) ||
                             qobject_cast<QAbstractButton *>(widget) ||
                             qobject_cast<QComboBox *>(widget);
        const QSize need = widget->minimumSizeHint();
        QVERIFY2(!hasText || !widget->isVisible() ||
                     (widget->width() >= need.width() && widget->height() >= need.height()),
                 qPrintable(widget->objectName() + QStringLiteral(" is clipped")));
    }
}

QTEST_MAIN(TestWindowLayout)
#include "tst_windowlayout.moc"

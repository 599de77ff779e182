#include "WindowFixture.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QTabWidget>
#include <QTest>

// The window's layout: every page's texts fit.
class TestWindowLayout : public QObject {
    Q_OBJECT
private slots:
    void textsFit_data();
    void textsFit();
};

void TestWindowLayout::textsFit_data() {
    QTest::addColumn<int>("page");
    int page = 0;
    for (const char *name : {"maintenance", "installation", "unpacking", "checking", "loaded"})
        QTest::newRow(name) << page++;
}

void TestWindowLayout::textsFit() {
    QFETCH(int, page);
    const QSize size(800, 600); // the start size; a larger window only gives more room

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

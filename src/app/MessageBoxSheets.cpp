#include "MessageBoxSheets.h"

#include "AlertBox.h"

#include <QIcon>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QWidget>

namespace {
QPointer<QMessageBox> last;

const char *iconFile(SheetPresenter::Kind kind) {
    return kind == SheetPresenter::Kind::Error
               ? "/System/Library/CoreServices/CoreTypes.bundle/Contents/Resources/"
                 "AlertCautionIcon.icns"
               : "/System/Library/CoreServices/CoreTypes.bundle/Contents/Resources/"
                 "AlertNoteIcon.icns";
}
} // namespace

void MessageBoxSheets::showSheet(Kind kind, const QString &headline, const QString &text,
                                 QObject *window) {
    showSheetWithExtra(kind, headline, text, window, {});
}

void MessageBoxSheets::showSheetWithExtra(Kind kind, const QString &headline, const QString &text,
                                          QObject *window, const Extra &extra) {
    auto *parent = qobject_cast<QWidget *>(window);
    auto *box = new QMessageBox(parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
    box->setText(headline);
    box->setInformativeText(extra.text.isEmpty() ? text
                                                 : text + QStringLiteral("\n\n") + extra.text);
    box->setStandardButtons(QMessageBox::Ok);
    if (!extra.button.isEmpty() && extra.action) {
        QPushButton *act = box->addButton(extra.button, QMessageBox::ActionRole);
        QObject::connect(act, &QPushButton::clicked, box, extra.action);
    }
    AlertBox::widen(*box);
    const QIcon icon = m_images.icon(QString::fromLatin1(iconFile(kind)));
    if (!icon.isNull())
        box->setIconPixmap(icon.pixmap(64, 64));
    last = box;
    box->open();
}

QMessageBox *MessageBoxSheets::lastShown() {
    return last.data();
}

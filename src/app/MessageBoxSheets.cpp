#include "MessageBoxSheets.h"

#include <QIcon>
#include <QMessageBox>
#include <QPointer>
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
    auto *parent = qobject_cast<QWidget *>(window);
    auto *box = new QMessageBox(parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
    box->setText(headline);
    box->setInformativeText(text);
    box->setStandardButtons(QMessageBox::Ok);
    const QIcon icon = m_images.icon(QString::fromLatin1(iconFile(kind)));
    if (!icon.isNull())
        box->setIconPixmap(icon.pixmap(64, 64));
    last = box;
    box->open();
}

QMessageBox *MessageBoxSheets::lastShown() {
    return last.data();
}

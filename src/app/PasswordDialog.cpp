#include "PasswordDialog.h"

#include "exec/Tr.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMetaObject>
#include <QThread>
#include <QVBoxLayout>

PasswordDialog::PasswordDialog(QWidget *window) : m_window(window) {}

std::optional<QString> PasswordDialog::askPassword(const QString &reason) {
    if (QThread::currentThread() == thread())
        return askOnUiThread(reason);
    std::optional<QString> answer;
    QMetaObject::invokeMethod(
        this, [&] { answer = askOnUiThread(reason); }, Qt::BlockingQueuedConnection);
    return answer;
}

std::optional<QString> PasswordDialog::askOnUiThread(const QString &reason) {
    if (m_answer)
        return m_answer(reason);
    QDialog dialog(m_window);
    dialog.setWindowTitle(kkTr("Authenticate"));
    auto *layout = new QVBoxLayout(&dialog);
    auto *label = new QLabel(kkTr("KextKeeper wants to make changes. Type an administrator's "
                                  "password to allow this."));
    label->setWordWrap(true);
    layout->addWidget(label);
    auto *form = new QFormLayout;
    auto *field = new QLineEdit;
    field->setEchoMode(QLineEdit::Password);
    form->addRow(kkTr("Password:"), field);
    layout->addLayout(form);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    layout->addWidget(buttons);
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    QString password = field->text();
    field->clear();
    return password;
}

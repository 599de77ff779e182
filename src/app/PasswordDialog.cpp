#include "PasswordDialog.h"

#include "exec/Tr.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QFutureWatcher>
#include <QLabel>
#include <QLineEdit>
#include <QMetaObject>
#include <QPushButton>
#include <QThread>
#include <QVBoxLayout>
#include <QtConcurrent>

PasswordDialog::PasswordDialog(QWidget *window) : m_window(window) {}

QString PasswordDialog::retryText() {
    return kkTr("Sorry, try again.");
}

bool PasswordDialog::askPassword(const QString &, const Check &check) {
    if (QThread::currentThread() == thread())
        return askOnUiThread(check);
    bool granted = false;
    QMetaObject::invokeMethod(
        this, [&] { granted = askOnUiThread(check); }, Qt::BlockingQueuedConnection);
    return granted;
}

void PasswordDialog::showError(const QString &text) {
    QMetaObject::invokeMethod(this, [this, text] {
        if (m_errorHandler)
            m_errorHandler(text);
    });
}

bool PasswordDialog::answerWithoutDialog(const Check &check) {
    QString problem;
    for (;;) {
        const std::optional<QString> password = m_answer(problem);
        if (!password)
            return false;
        const Verdict verdict = check(*password);
        if (verdict != Verdict::WrongPassword)
            return verdict == Verdict::Granted;
        problem = retryText();
    }
}

bool PasswordDialog::askOnUiThread(const Check &check) {
    if (m_answer)
        return answerWithoutDialog(check);
    QDialog dialog(m_window);
    dialog.setWindowTitle(kkTr("Authenticate"));
    auto *layout = new QVBoxLayout(&dialog);
    auto *label = new QLabel(kkTr("KextKeeper needs administrator rights for this task and gets "
                                  "them through sudo. Type your own password: the one sudo "
                                  "asks you for, not root's."));
    label->setWordWrap(true);
    // A wrapped label takes the height of the width it is given: give it a line's worth.
    label->setMinimumWidth(label->fontMetrics().averageCharWidth() * 48);
    layout->addWidget(label);
    auto *form = new QFormLayout;
    auto *field = new QLineEdit;
    field->setObjectName(QStringLiteral("password"));
    field->setEchoMode(QLineEdit::Password);
    form->addRow(kkTr("Your password:"), field);
    layout->addLayout(form);
    auto *problem = new QLabel(retryText());
    problem->setObjectName(QStringLiteral("problem"));
    problem->setStyleSheet(QStringLiteral("color: #c00;"));
    problem->hide();
    layout->addWidget(problem);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetMinimumSize);

    // sudo takes a while to turn a wrong password down; it is asked on the pool so the
    // dialog keeps painting, with every control off until it has answered.
    Verdict verdict = Verdict::WrongPassword;
    QFutureWatcher<Verdict> watcher;
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, [&] {
        field->setEnabled(false);
        buttons->setEnabled(false);
        const QString password = field->text();
        field->clear();
        watcher.setFuture(QtConcurrent::run([check, password] { return check(password); }));
    });
    QObject::connect(&watcher, &QFutureWatcher<Verdict>::finished, &dialog, [&] {
        verdict = watcher.result();
        if (verdict != Verdict::WrongPassword) {
            dialog.accept();
            return;
        }
        problem->show();
        dialog.adjustSize();
        field->setEnabled(true);
        buttons->setEnabled(true);
        field->setFocus();
    });
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    dialog.exec();
    // Closed from the window manager while sudo was asked: its answer still counts, and
    // the check must not outlive the caller that gave it.
    watcher.waitForFinished();
    if (watcher.isFinished() && watcher.future().resultCount() > 0)
        verdict = watcher.result();
    return verdict == Verdict::Granted;
}

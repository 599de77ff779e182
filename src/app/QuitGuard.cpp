#include "QuitGuard.h"

#include "AlertBox.h"

#include <QCloseEvent>
#include <QMessageBox>
#include <QPushButton>
#include <QWidget>

QuitGuard::QuitGuard(QWidget &window, std::function<bool()> taskRunning)
    : QObject(&window), m_window(window), m_taskRunning(std::move(taskRunning)) {
    window.installEventFilter(this);
}

void QuitGuard::taskEnded() {
    if (m_pending && !m_taskRunning())
        m_window.close();
}

bool QuitGuard::eventFilter(QObject *watched, QEvent *event) {
    if (watched != &m_window || event->type() != QEvent::Close || !m_taskRunning())
        return QObject::eventFilter(watched, event);
    event->ignore();
    if (!m_pending && !m_question)
        ask();
    return true;
}

void QuitGuard::ask() {
    auto *box = new QMessageBox(&m_window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    box->setIcon(QMessageBox::Question);
    box->setText(tr("A task is running. Quit when it ends?"));
    box->setInformativeText(tr("Its commands go on either way; the window stays open until "
                               "they are done."));
    QPushButton *quit = box->addButton(tr("&Quit When It Ends"), QMessageBox::AcceptRole);
    box->addButton(QMessageBox::Cancel);
    box->setDefaultButton(quit);
    AlertBox::widen(*box);
    connect(box, &QMessageBox::finished, this, [this, box, quit] {
        m_pending = box->clickedButton() == quit;
        // The task may have ended while the question was open.
        taskEnded();
    });
    m_question = box;
    box->open();
}

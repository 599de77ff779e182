#pragma once

#include <QMessageBox>
#include <QObject>
#include <QPointer>
#include <functional>

class QWidget;

// Closing the main window ends the program, but root commands of a running task would
// go on unseen. So while a task runs the close is held, the user is asked, and the window
// closes once the task has ended.
class QuitGuard : public QObject {
    Q_OBJECT
public:
    QuitGuard(QWidget &window, std::function<bool()> taskRunning);

    // Called whenever a task ends: a quit the user asked for happens now.
    void taskEnded();
    bool quitPending() const { return m_pending; }
    // The open question, for tests that answer it.
    QMessageBox *question() const { return m_question.data(); }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void ask();

    QWidget &m_window;
    std::function<bool()> m_taskRunning;
    QPointer<QMessageBox> m_question;
    bool m_pending = false;
};

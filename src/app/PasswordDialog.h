#pragma once

#include "exec/PasswordPrompt.h"

#include <QObject>
#include <functional>
#include <optional>

class QWidget;

// Our password dialog. It asks for the user's own password, which sudo checks for
// administrator rights; a wrong one keeps the dialog open with "Sorry, try again." until
// the user gets it right or cancels. askPassword may be called from any thread: the dialog
// is shown on the UI thread and the caller waits for the answer.
class PasswordDialog final : public QObject, public PasswordPrompt {
    Q_OBJECT
public:
    explicit PasswordDialog(QWidget *window);
    bool askPassword(const QString &reason, const Check &check) override;
    void showError(const QString &text) override;

    // Tests answer the dialog without a person: the function gets the problem the dialog
    // shows ("" at first, "Sorry, try again." after a wrong password) and returns the
    // password, or nothing for Cancel.
    using Answer = std::function<std::optional<QString>(const QString &problem)>;
    void setAnswer(Answer answer) { m_answer = std::move(answer); }
    // Where errors go (the window's error alert); called on the UI thread.
    void setErrorHandler(std::function<void(const QString &)> handler) {
        m_errorHandler = std::move(handler);
    }

    static QString retryText();

private:
    bool askOnUiThread(const Check &check);
    bool answerWithoutDialog(const Check &check);
    QWidget *m_window;
    Answer m_answer;
    std::function<void(const QString &)> m_errorHandler;
};

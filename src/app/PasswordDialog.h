#pragma once

#include "exec/PasswordPrompt.h"

#include <QObject>
#include <functional>

class QWidget;

// Our administrator password dialog. askPassword may be called from any thread: the
// dialog is shown on the UI thread and the caller waits for the answer.
class PasswordDialog final : public QObject, public PasswordPrompt {
    Q_OBJECT
public:
    explicit PasswordDialog(QWidget *window);
    std::optional<QString> askPassword(const QString &reason) override;

    // Tests answer the dialog without a person: the function gets the reason and
    // returns the password, or nothing for Cancel.
    void setAnswer(std::function<std::optional<QString>(const QString &)> answer) {
        m_answer = std::move(answer);
    }

private:
    std::optional<QString> askOnUiThread(const QString &reason);
    QWidget *m_window;
    std::function<std::optional<QString>(const QString &)> m_answer;
};

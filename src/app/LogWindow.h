#pragma once

#include <QWidget>

class CommandJournal;
class JournalModel;
class QLabel;
class QPlainTextEdit;
class QTableView;

// The Log window (Window > Log, Ctrl+L): the commands this run ran as root, failures in
// red, the selected one's error text below, and a button that shows the journal file
// where every run's commands are kept. In a dry run it lists the planned commands.
class LogWindow final : public QWidget {
    Q_OBJECT
public:
    LogWindow(CommandJournal &journal, bool dryRun, QWidget *parent = nullptr);

    JournalModel *model() const { return m_model; }
    // Where "Show Journal File" points; replaceable for tests.
    void setRevealer(std::function<void(const QString &)> reveal) { m_reveal = std::move(reveal); }

private:
    void showSelected();

    CommandJournal &m_journal;
    JournalModel *m_model;
    QTableView *m_table;
    QPlainTextEdit *m_details;
    std::function<void(const QString &)> m_reveal;
};

#include "LogWindow.h"

#include "FileViewer.h"
#include "JournalModel.h"
#include "exec/CommandJournal.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

LogWindow::LogWindow(CommandJournal &journal, bool dryRun, QWidget *parent)
    : QWidget(parent, Qt::Window), m_journal(journal), m_model(new JournalModel(this)),
      m_table(new QTableView(this)), m_details(new QPlainTextEdit(this)),
      m_reveal(&FileViewer::reveal) {
    setObjectName(QStringLiteral("LogWindow"));
    setWindowTitle(tr("Log"));
    resize(760, 420);
    auto *layout = new QVBoxLayout(this);
    auto *intro = new QLabel(dryRun ? tr("Dry run: these commands would run as root. None of "
                                         "them was run.")
                                    : tr("The commands this run of KextKeeper ran as root. "
                                         "Failures are red; the journal keeps every run's."),
                             this);
    intro->setObjectName(QStringLiteral("logIntro"));
    intro->setWordWrap(true);
    layout->addWidget(intro);

    m_model->follow(journal);
    m_table->setObjectName(QStringLiteral("logTable"));
    m_table->setModel(m_model);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->verticalHeader()->hide();
    m_table->horizontalHeader()->setStretchLastSection(true);
    m_table->setWordWrap(false);
    layout->addWidget(m_table, 3);

    m_details->setObjectName(QStringLiteral("logDetails"));
    m_details->setReadOnly(true);
    m_details->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_details->setPlaceholderText(tr("The selected command's error text"));
    layout->addWidget(m_details, 1);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    auto *reveal = new QPushButton(tr("Show Journal File"), this);
    reveal->setObjectName(QStringLiteral("logShowFile"));
    reveal->setEnabled(!journal.path().isEmpty());
    buttons->addWidget(reveal);
    layout->addLayout(buttons);

    connect(reveal, &QPushButton::clicked, this, [this] { m_reveal(m_journal.path()); });
    connect(m_table->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            &LogWindow::showSelected);
    // The newest command stays in sight.
    connect(m_model, &JournalModel::entryAdded, m_table, &QTableView::scrollToBottom);
}

void LogWindow::showSelected() {
    const QModelIndex current = m_table->currentIndex();
    if (!current.isValid()) {
        m_details->clear();
        return;
    }
    const JournalEntry &entry = m_model->entry(current.row());
    m_details->setPlainText(entry.displayLine() + QStringLiteral("\n") + entry.statusText() +
                            QStringLiteral("\n\n") + entry.result.errorText);
}

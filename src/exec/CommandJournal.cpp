#include "exec/CommandJournal.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

CommandJournal::CommandJournal(QString path) : m_path(std::move(path)) {}

QString CommandJournal::defaultPath(const QString &home) {
#ifdef Q_OS_MACOS
    return home + QStringLiteral("/Library/Logs/KextKeeper/journal.jsonl");
#else
    // XDG rules ignore a relative value.
    const QString state = qEnvironmentVariable("XDG_STATE_HOME");
    const QString base =
        QDir::isAbsolutePath(state) ? state : home + QStringLiteral("/.local/state");
    return base + QStringLiteral("/kextkeeper/journal.jsonl");
#endif
}

void CommandJournal::record(const JournalEntry &entry) {
    std::function<void(const JournalEntry &)> listener;
    {
        QMutexLocker lock(&m_mutex);
        m_entries << entry;
        if (!entry.planned && !m_path.isEmpty())
            append(QJsonDocument(entry.toJson()).toJson(QJsonDocument::Compact) + '\n');
        listener = m_listener;
    }
    if (listener)
        listener(entry);
}

void CommandJournal::recordPlanned(const Command &command) {
    JournalEntry entry;
    entry.time = QDateTime::currentDateTimeUtc();
    entry.command = command;
    entry.planned = true;
    record(entry);
}

QList<JournalEntry> CommandJournal::entries() const {
    QMutexLocker lock(&m_mutex);
    return m_entries;
}

void CommandJournal::setListener(std::function<void(const JournalEntry &)> listener) {
    QMutexLocker lock(&m_mutex);
    m_listener = std::move(listener);
}

void CommandJournal::append(const QByteArray &line) const {
    const QFileInfo file(m_path);
    QDir().mkpath(file.path());
    if (file.size() > rotateSize) {
        QFile::remove(m_path + QStringLiteral(".1"));
        QFile::rename(m_path, m_path + QStringLiteral(".1"));
    }
    // Never through a link someone planted: the journal is ours alone.
    const int fd = ::open(QFile::encodeName(m_path).constData(),
                          O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0)
        return;
    // One write per entry, so entries of two processes never interleave.
    const char *p = line.constData();
    qsizetype left = line.size();
    while (left > 0) {
        const ssize_t n = ::write(fd, p, size_t(left));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        p += n;
        left -= n;
    }
    ::close(fd);
}

QList<JournalEntry> CommandJournal::readFile(const QString &path) {
    QList<JournalEntry> entries;
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return entries;
    while (!file.atEnd()) {
        const QJsonDocument document = QJsonDocument::fromJson(file.readLine());
        if (!document.isObject())
            continue;
        if (std::optional<JournalEntry> entry = JournalEntry::fromJson(document.object()))
            entries << *entry;
    }
    return entries;
}

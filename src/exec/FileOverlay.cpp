#include "exec/FileOverlay.h"

#include <QDir>
#include <QFileInfo>

namespace {

QString clean(const QString &path) {
    return QDir::cleanPath(path);
}

bool isUnder(const QString &path, const QString &top) {
    return path == top || (path.startsWith(top) && path.at(top.size()) == QLatin1Char('/'));
}

// The words after the options ("-R", "-Rf", "--"), as the BSD tools read them.
QStringList operands(const QStringList &args) {
    QStringList words;
    bool options = true;
    for (const QString &arg : args) {
        if (options && arg == QLatin1String("--")) {
            options = false;
            continue;
        }
        if (options && arg.startsWith(QLatin1Char('-')) && arg.size() > 1)
            continue;
        options = false;
        words << clean(arg);
    }
    return words;
}

} // namespace

void FileOverlay::apply(const Command &command) {
    const QString tool = QFileInfo(command.tool).fileName();
    const QStringList words = operands(command.args);
    if (tool == QLatin1String("rm")) {
        for (const QString &word : words)
            m_changes << Change{Change::Remove, word, {}};
    } else if (tool == QLatin1String("cp") || tool == QLatin1String("mv")) {
        copyInto(words, tool == QLatin1String("mv"));
    } else if (tool == QLatin1String("touch")) {
        for (const QString &word : words)
            if (!exists(word))
                m_changes << Change{Change::CreateFile, word, {}};
    } else if (tool == QLatin1String("kextcache")) {
        const qsizetype m = command.args.indexOf(QStringLiteral("-m"));
        if (m >= 0 && m + 1 < command.args.size())
            m_changes << Change{Change::CreateFile, clean(command.args.at(m + 1)), {}};
    } else if (command.args.size() > 2 && command.args.at(0) == QLatin1String("mkext") &&
               command.args.at(1) == QLatin1String("build")) {
        // Our own builder standing in for kextcache.
        m_changes << Change{Change::CreateFile, clean(command.args.at(2)), {}};
    }
}

void FileOverlay::copyInto(const QStringList &words, bool move) {
    if (words.size() < 2)
        return;
    const QString destination = words.last();
    const bool intoFolder = isDir(destination);
    for (const QString &source : words.mid(0, words.size() - 1)) {
        if (!exists(source))
            continue; // the tool fails on this one and goes on
        const QString target = intoFolder
                                   ? destination + QLatin1Char('/') + QFileInfo(source).fileName()
                                   : destination;
        m_changes << Change{Change::Copy, target, source};
        if (move)
            m_changes << Change{Change::Remove, source, {}};
    }
}

bool FileOverlay::exists(const QString &path) const {
    return stateAt(clean(path), m_changes.size()) != State::Missing;
}

bool FileOverlay::isDir(const QString &path) const {
    return stateAt(clean(path), m_changes.size()) == State::Dir;
}

FileOverlay::State FileOverlay::stateAt(const QString &path, qsizetype changes) const {
    for (qsizetype i = changes - 1; i >= 0; --i) {
        const Change &change = m_changes.at(i);
        if (!isUnder(path, change.target)) {
            // A folder holding something made later exists as a folder.
            if (change.kind != Change::Remove && isUnder(change.target, path))
                return State::Dir;
            continue;
        }
        switch (change.kind) {
        case Change::Remove:
            return State::Missing;
        case Change::CreateFile:
            return path == change.target ? State::File : State::Missing;
        case Change::Copy:
            return stateAt(change.source + path.mid(change.target.size()), i);
        }
    }
    const QFileInfo info(path);
    return !info.exists() ? State::Missing : info.isDir() ? State::Dir : State::File;
}

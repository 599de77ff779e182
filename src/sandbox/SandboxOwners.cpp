#include "sandbox/SandboxOwners.h"

#include "plist/RegularFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace {

std::optional<uint> id(const QString &text, const char *rootName) {
    if (text == QLatin1String(rootName))
        return 0u;
    bool ok = false;
    const uint value = text.toUInt(&ok);
    return ok ? std::optional(value) : std::nullopt;
}

} // namespace

SandboxOwners::SandboxOwners(const QString &root)
    : m_root(root), m_canonicalRoot(QFileInfo(root).canonicalFilePath()) {
    // The sandbox's own record, but a stand-in tool must not hang on it either.
    const RegularFile::Read read = RegularFile::read(recordPath(root), 64 << 20);
    if (!read.bytes)
        return;
    const QStringList lines = QString::fromUtf8(*read.bytes).split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        const QString owner = line.section(QLatin1Char('\t'), 0, 0);
        const QString path = line.section(QLatin1Char('\t'), 1);
        if (!owner.contains(QLatin1Char(':')))
            continue;
        m_entries.insert(path, {owner.section(QLatin1Char(':'), 0, 0).toUInt(),
                                owner.section(QLatin1Char(':'), 1).toUInt()});
    }
}

bool SandboxOwners::kept(const QString &root) {
    return QFileInfo::exists(recordPath(root));
}

std::optional<QString> SandboxOwners::relative(const QString &path) const {
    const QFileInfo info(path);
    const QString parent = QFileInfo(info.absolutePath()).canonicalFilePath();
    if (parent.isEmpty() || m_canonicalRoot.isEmpty())
        return std::nullopt;
    const QString full =
        info.fileName().isEmpty() ? parent : parent + QLatin1Char('/') + info.fileName();
    if (full == m_canonicalRoot)
        return QString();
    if (!full.startsWith(m_canonicalRoot + QLatin1Char('/')))
        return std::nullopt;
    return full.mid(m_canonicalRoot.size() + 1);
}

SandboxOwners::Owner SandboxOwners::owner(const QString &path) const {
    std::optional<QString> at = relative(path);
    if (!at)
        return {0, 0};
    for (;;) {
        const auto it = m_entries.constFind(*at);
        if (it != m_entries.cend())
            return *it;
        if (at->isEmpty())
            return {0, 0};
        *at = at->contains(QLatin1Char('/')) ? at->section(QLatin1Char('/'), 0, -2) : QString();
    }
}

bool SandboxOwners::set(const QString &path, Owner owner, bool recursive) {
    if (!QFileInfo(path).exists() && !QFileInfo(path).isSymLink())
        return false;
    // Outside the sandbox (the desktop's staging folder) nothing is kept: only the
    // simulated Mac's own files have owners that matter.
    const std::optional<QString> at = relative(path);
    if (!at)
        return true;
    if (recursive) {
        for (auto it = m_entries.begin(); it != m_entries.end();)
            it = (it.key() == *at || it.key().startsWith(*at + QLatin1Char('/')) || at->isEmpty())
                     ? m_entries.erase(it)
                     : ++it;
    } else if (QFileInfo(path).isDir()) {
        // What lies below keeps its owner: pin it before the folder changes hands.
        const QStringList names = QDir(path).entryList(QDir::AllEntries | QDir::Hidden |
                                                       QDir::System | QDir::NoDotAndDotDot);
        for (const QString &name : names) {
            const QString child = at->isEmpty() ? name : *at + QLatin1Char('/') + name;
            if (!m_entries.contains(child))
                m_entries.insert(child, this->owner(path + QLatin1Char('/') + name));
        }
    }
    m_entries.insert(*at, owner);
    return true;
}

bool SandboxOwners::save() const {
    QStringList paths = m_entries.keys();
    paths.sort();
    QByteArray text;
    for (const QString &path : std::as_const(paths)) {
        const Owner owner = m_entries.value(path);
        text += QStringLiteral("%1:%2\t%3\n").arg(owner.first).arg(owner.second).arg(path).toUtf8();
    }
    QDir().mkpath(QFileInfo(recordPath(m_root)).path());
    QSaveFile file(recordPath(m_root));
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.commit();
}

StandInResult SandboxOwners::chown(const QStringList &args) {
    bool recursive = false;
    qsizetype at = 0;
    for (; at < args.size() && args.at(at).startsWith(QLatin1Char('-')); ++at) {
        if (args.at(at) == QLatin1String("-R"))
            recursive = true;
        else
            return StandInResult::failure(
                QStringLiteral("chown: illegal option -- %1\n").arg(args.at(at).mid(1)));
    }
    if (args.size() - at < 2)
        return StandInResult::failure(QStringLiteral("usage: chown [-R] owner[:group] file ...\n"));
    const QString who = args.at(at);
    const std::optional<uint> uid = id(who.section(QLatin1Char(':'), 0, 0), "root");
    const bool keepGroup = !who.contains(QLatin1Char(':'));
    const std::optional<uint> gid =
        keepGroup ? std::optional<uint>(0u) : id(who.section(QLatin1Char(':'), 1), "wheel");
    if (!uid || !gid)
        return StandInResult::failure(QStringLiteral("chown: %1: illegal user name\n").arg(who));
    StandInResult result;
    for (const QString &path : args.mid(at + 1)) {
        const uint group = keepGroup ? owner(path).second : *gid;
        if (!set(path, {*uid, group}, recursive)) {
            result.err +=
                QStringLiteral("chown: %1: No such file or directory\n").arg(path).toUtf8();
            result.status = 1;
        }
    }
    if (!save())
        return StandInResult::failure(QStringLiteral("chown: can't write the owner record\n"));
    return result;
}

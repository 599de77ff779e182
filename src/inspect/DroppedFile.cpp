#include "inspect/DroppedFile.h"

namespace {
// The text after the last dot of the last path component; "" when there is none.
QString extension(const QString &path) {
    const QString name = path.section(QLatin1Char('/'), -1);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot > 0 ? name.mid(dot + 1) : QString();
}
} // namespace

DroppedFile::DroppedFile(const QStringList &files, int shownPage) {
    if (files.isEmpty())
        return;
    // A folder dragged from some file managers arrives with a final slash.
    m_path = files.first();
    while (m_path.size() > 1 && m_path.endsWith(QLatin1Char('/')))
        m_path.chop(1);
    const QString ext = extension(m_path);
    if (ext == QLatin1String("mkext") && shownPage == unpackPage)
        m_action = Action::ListMkext;
    else if (ext == QLatin1String("kext") && shownPage == checkPage)
        m_action = Action::CheckKext;
}

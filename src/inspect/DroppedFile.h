#pragma once

#include <QString>
#include <QStringList>

// What a drop on the main window does: only the first file counts, an mkext is listed
// when the unpack page shows, a kext is checked when the check page shows, and anything
// else is ignored (a drop never switches pages). Extensions match exactly, case included.
class DroppedFile {
public:
    enum class Action { None, ListMkext, CheckKext };

    // Page indexes of the tab view.
    static constexpr int unpackPage = 2;
    static constexpr int checkPage = 3;

    DroppedFile(const QStringList &files, int shownPage);

    Action action() const { return m_action; }
    QString path() const { return m_path; }

private:
    Action m_action = Action::None;
    QString m_path;
};

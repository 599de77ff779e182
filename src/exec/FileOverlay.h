#pragma once

#include "exec/Command.h"

#include <QList>
#include <QString>

// The file system as a run's own commands would leave it, without running them: a dry
// run applies each command it prints, and asks the overlay instead of the disk, so every
// later choice (remove the old copy? does the mkext exist?) is the one the real run
// makes. It knows the tools plans run: rm, cp, mv, touch and the mkext builders; the
// others change no names. Paths no command touched are looked up on disk.
class FileOverlay {
public:
    void apply(const Command &command);
    bool exists(const QString &path) const;
    bool isDir(const QString &path) const;

private:
    struct Change {
        enum Kind { Remove, Copy, CreateFile } kind;
        QString target;
        QString source; // Copy only
    };
    enum class State { Missing, File, Dir };
    State stateAt(const QString &path, qsizetype changes) const;
    void copyInto(const QStringList &operands, bool move);

    QList<Change> m_changes;
};

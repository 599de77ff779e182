#pragma once

#include "exec/TaskResult.h"
#include "volumes/SystemPaths.h"

#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

// Lists an mkext archive and unpacks one architecture of it with the archive tool,
// as the user. Success is judged only by the tool's error text: empty means unpacked.
// The tool's own messages for a missing architecture end in a line feed; the alert
// shows them without it, and any other text is shown exactly as the tool wrote it.
class MkextUnpackTask {
public:
    // Runs the archive tool with these arguments and returns the stream asked for;
    // absent when it could not run. Unreadable listing text is absent too; unreadable
    // error text counts as none, so the unpack counts as done.
    using Run = std::function<std::optional<QString>(const QStringList &args)>;
    struct Tool {
        Run output; // standard output
        Run errors; // standard error
    };

    MkextUnpackTask(const SystemPaths &paths, Tool tool);

    // Apple's tool below the system root, run as the user.
    static Tool systemTool(const SystemPaths &paths);
    static QString toolPath(const SystemPaths &paths);
    // Our own reader, which prints what Apple's tool prints; for systems without it.
    static Tool builtinTool();
    static bool hasSystemTool(const SystemPaths &paths);

    static QStringList listingArgs(const QString &mkext);
    static QStringList unpackArgs(const QString &arch, const QString &folder, const QString &mkext);

    // The desktop folder used when the user picks none; made on demand and removed
    // again when a failed unpack leaves it empty.
    QString defaultFolder() const;

    // The "-v" listing, or "" when the tool printed nothing readable.
    QString listing(const QString &mkext) const;
    // Unpacks; an empty mkext path means none was chosen.
    TaskResult unpack(const QString &mkext, const QString &arch, const QString &folder) const;

    // The alert text for a non-empty error text of the tool.
    static QString alertText(const QString &errorText);

private:
    SystemPaths m_paths;
    Tool m_tool;
};

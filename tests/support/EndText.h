#pragma once

#include "exec/TaskResult.h"

#include <QStringList>

// A task's end as a plan test records it after the effects: "info TEXT" or "error TEXT",
// nothing for a task that ends without a word.
inline QStringList endText(const TaskResult &result) {
    if (result.message.isEmpty())
        return {};
    return {(result.ok ? QStringLiteral("info ") : QStringLiteral("error ")) + result.message};
}

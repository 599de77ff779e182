#pragma once

#include "exec/SheetPresenter.h"

#include <QStringList>

// Keeps every sheet the window would show as "error: TEXT" or "info: TEXT", so a test
// states both the kind and the words it expects.
class RecordingSheets final : public SheetPresenter {
public:
    QStringList texts;
    void showSheet(Kind kind, const QString &, const QString &text, QObject *) override {
        texts << (kind == Kind::Error ? QStringLiteral("error: ") : QStringLiteral("info: ")) +
                     text;
    }
};

#pragma once

#include "exec/SheetPresenter.h"

// Alert sheets as window-modal message boxes opened without blocking (a real sheet on
// macOS). The caution and note icons come from the system's icon files when they can
// be read, otherwise from the platform's standard icons.
class MessageBoxSheets final : public SheetPresenter {
public:
    void showSheet(Kind kind, const QString &headline, const QString &text,
                   QObject *window) override;

    // The box shown last, for tests that answer it.
    static class QMessageBox *lastShown();
};

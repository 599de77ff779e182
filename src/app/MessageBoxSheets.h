#pragma once

#include "SystemImages.h"
#include "exec/SheetPresenter.h"

// Alert sheets as window-modal message boxes opened without blocking (a real sheet on
// macOS). The caution and note icons come from the system's icon files (or our copies);
// a sheet whose icon can't be read has none.
class MessageBoxSheets final : public SheetPresenter {
public:
    explicit MessageBoxSheets(SystemImages images) : m_images(std::move(images)) {}

    void showSheet(Kind kind, const QString &headline, const QString &text,
                   QObject *window) override;
    void showSheetWithExtra(Kind kind, const QString &headline, const QString &text,
                            QObject *window, const Extra &extra) override;

    // The box shown last, for tests that answer it.
    static class QMessageBox *lastShown();

private:
    SystemImages m_images;
};

#pragma once

#include <QString>
#include <QStringList>

// The rows of the last kext status run and the view of them the filter leaves. The
// filter never runs the tool again: it always works on the last refresh.
class LoadedKextList {
public:
    // Takes a new listing; a tool that printed nothing (or could not run) gives no rows.
    void refresh(const QString &kextstatOutput);

    const QStringList &rows() const { return m_rows; }

    // Rows containing the text anywhere, ignoring case, in listing order; all rows for
    // the empty text. A plain substring: no wildcards, and version numbers match too.
    QStringList filtered(const QString &text) const;

    // The label under the filter: "Found: " and the number of rows shown.
    static QString foundText(qsizetype count);

private:
    QStringList m_rows;
};
